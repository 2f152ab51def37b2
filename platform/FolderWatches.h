#pragma once

#include "platform/Handle.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb {

struct FolderEntry {
    std::string path;              // absolute
    std::optional<double> created; // seconds since 1970; absent when it can't be read
};

// What happened in a watched folder.
struct FolderChange {
    // Of what came, went or is complete, in the order in which it happened; a name may occur more than once.
    std::vector<std::string> names = {};
    // Anything may have happened: the system doesn't say what, or lost count.
    bool everything = false;
};

// A folder that was opened for watching; let go with its last reference.
class OpenFolder {
public:
    virtual ~OpenFolder() = default;
    // The path that it was opened by still leads to this very folder, and it can still be read. Main thread; cheap.
    virtual bool isCurrent() const = 0;
};

// Changes in folders, and what lies in them. Paths are absolute.
class FolderWatches {
public:
    virtual ~FolderWatches() = default;
    // Null when the folder can't be opened. May block, so callable from any thread.
    virtual std::shared_ptr<OpenFolder> open(const std::string& path) = 0;
    // Calls back on the main thread, in a turn of its own, when files come, go or are complete, and when the folder
    // itself goes. Main thread. An empty handle when the system can't watch.
    virtual Handle watch(std::shared_ptr<OpenFolder> folder, std::function<void(const FolderChange&)> changed) = 0;
    // What lies directly in the folder and isn't hidden; a file that is still being written is left out where the
    // system can tell. Empty when it can't be listed. May block, so callable from any thread.
    virtual std::vector<FolderEntry> list(const std::string& path) = 0;
    // Those of these names that list() would find, in this order, without a look at the others. Nothing when the folder
    // can't be read. May block, so callable from any thread.
    virtual std::optional<std::vector<FolderEntry>> look(const std::string& path,
                                                         const std::vector<std::string>& names) = 0;
};

} // namespace rb
