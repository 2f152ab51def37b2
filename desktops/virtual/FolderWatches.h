#pragma once

#include "platform/FolderWatches.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace rb {

class VirtualRunLoop;

// Folders in memory: what a test puts into them, and whom it tells.
class VirtualFolderWatches final : public FolderWatches {
public:
    explicit VirtualFolderWatches(VirtualRunLoop& loop)
        : loop_(loop) {}

    std::shared_ptr<OpenFolder> open(const std::string& path) override;
    Handle watch(std::shared_ptr<OpenFolder> folder, std::function<void(const FolderChange&)> changed) override;
    std::vector<FolderEntry> list(const std::string& path) override;
    std::optional<std::vector<FolderEntry>> look(const std::string& path,
                                                 const std::vector<std::string>& names) override;

    // A file comes into its folder, created now unless said otherwise; nothing: unreadable.
    void put(const std::string& path);
    void put(const std::string& path, std::optional<double> created);
    void take(const std::string& path);
    // An event without a change.
    void touch(const std::string& folder) { tell(folder, {}); }
    // Events say what changed from now on, as they do on Linux; at first they don't, as on macOS.
    void setNamesChanges(bool names) { namesChanges_ = names; }
    // The next event comes without names, as after too many.
    void loseCount() { lostCount_ = true; }
    // Can't be opened from now on.
    void deny(const std::string& folder) { denied_.insert(folder); }
    void allow(const std::string& folder) { denied_.erase(folder); }
    // Another folder has its place now; whoever watches the old one hears nothing of it.
    void replace(const std::string& folder) { ++places_[folder]; }
    // Lists as empty while it lasts.
    void breakListing(const std::string& folder) { broken_.insert(folder); }
    void mendListing(const std::string& folder) { broken_.erase(folder); }

    // Of whole folders, and looks at single names.
    int listings() const { return listings_; }
    int looks() const { return looks_; }
    // Folders that are held open, and those of them that are watched.
    std::size_t openFolders() const;
    std::multiset<std::string> watched() const;

private:
    struct Folder;
    struct Watch {
        std::shared_ptr<OpenFolder> folder;
        std::function<void(const FolderChange&)> changed;
    };
    using Watches = std::map<unsigned long, std::shared_ptr<Watch>>;

    void tell(const std::string& folder, std::vector<std::string> names);

    VirtualRunLoop& loop_;
    std::map<std::string, std::map<std::string, std::optional<double>>> folders_;
    std::map<std::string, int> places_; // how often each was replaced
    std::set<std::string> denied_;
    std::set<std::string> broken_;
    std::vector<std::weak_ptr<OpenFolder>> opened_;
    std::shared_ptr<Watches> watches_ = std::make_shared<Watches>();
    unsigned long next_ = 0;
    int listings_ = 0;
    int looks_ = 0;
    bool namesChanges_ = false;
    bool lostCount_ = false;
};

} // namespace rb
