#pragma once

#include "platform/Desktop.h"
#include "platform/FolderWatches.h"
#include "platform/Handle.h"
#include "platform/RunLoop.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace rb {

// Notices new captures in one folder and reports each of them once. The folder is opened and looked at off the main
// thread: all of it at first, and where the system says what changed only that from then on. Everything else is on the
// main thread.
class RBScreenshotWatcher {
public:
    explicit RBScreenshotWatcher(const Desktop& desktop);
    RBScreenshotWatcher(const RBScreenshotWatcher&) = delete;
    RBScreenshotWatcher& operator=(const RBScreenshotWatcher&) = delete;

    // Where the system saves screenshots now; the Desktop unless the settings name another folder that is there.
    static std::string screenshotFolder(const Desktop& desktop);
    // By the file's name.
    static bool isImage(const std::string& path);
    static bool isRecording(const std::string& path);

    // The folder to watch; nothing follows the system's.
    std::optional<std::string> fixedFolder;
    bool acceptsRecordings = false;
    std::function<void(const std::string& path)> onNew;
    // The folder can't be watched. May be empty.
    std::function<void()> onDenied;

    void start();
    // Looks whether the folder's path leads to another folder by now, or to one again, and watches that one. For calls
    // every few seconds: a failure is told only once.
    void checkFolder();
    // Forgets all judged names as well.
    void stop();
    // The folder being watched; empty before the start.
    const std::string& folder() const { return folder_; }

private:
    static FolderChange unknown() { return {.everything = true}; }
    void open();
    void watch(const std::shared_ptr<OpenFolder>& opened);
    void lose();
    void noteChange(const FolderChange& change);
    void scan();
    // Null entries: the folder couldn't be read.
    void scanned(const FolderChange& looked, const std::vector<FolderEntry>* entries);
    void judge(const FolderEntry& entry, std::string name);
    void report();
    bool isNewCapture(const FolderEntry& entry) const;

    const Desktop& desktop_;
    std::string folder_;
    // On the Desktop only images that the system marked count.
    bool onlyTagged_ = false;
    std::unordered_set<std::string> known_; // names already judged
    std::deque<std::string> captures_;      // judged new, not yet reported
    bool reporting_ = false;                // a later turn goes on with them
    std::shared_ptr<OpenFolder> opened_;    // null while nothing is watched
    Handle source_;
    double launchDate_; // wall clock; what was there before is never new
    bool stopped_ = false;
    bool starting_ = false;
    bool denied_ = false; // and told so
    bool scanning_ = false;
    bool missed_ = false;              // a scan was due while one was in flight
    FolderChange changed_ = unknown(); // since the last scan began
    std::uint64_t generation_ = 0;     // a listing that was begun under an earlier one is dropped
    Handle quiet_;                     // until the folder has been quiet for a while
    DelayedCalls later_;
    Lifetime lifetime_;
};

} // namespace rb
