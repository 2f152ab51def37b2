#include "desktops/virtual/FolderWatches.h"

#include "desktops/virtual/RunLoop.h"
#include "platform/Files.h"

#include <algorithm>
#include <utility>

namespace rb {

struct VirtualFolderWatches::Folder final : OpenFolder {
    Folder(VirtualFolderWatches& folders, std::string folder)
        : watches(folders)
        , path(std::move(folder))
        , place(watches.places_[path]) {}
    bool isInPlace() const { return watches.places_[path] == place; }
    bool isCurrent() const override { return isInPlace() && !watches.denied_.contains(path); }
    VirtualFolderWatches& watches;
    std::string path;
    int place;
};

std::shared_ptr<OpenFolder> VirtualFolderWatches::open(const std::string& path) {
    if (denied_.contains(path)) {
        return nullptr;
    }
    auto folder = std::make_shared<Folder>(*this, path);
    opened_.push_back(folder);
    return folder;
}

Handle VirtualFolderWatches::watch(std::shared_ptr<OpenFolder> folder,
                                   std::function<void(const FolderChange&)> changed) {
    loop_.requireMainThread("FolderWatches::watch");
    const unsigned long number = next_++;
    (*watches_)[number] = std::make_shared<Watch>(Watch{std::move(folder), std::move(changed)});
    return Handle([watches = watches_, number] { watches->erase(number); });
}

std::vector<FolderEntry> VirtualFolderWatches::list(const std::string& path) {
    ++listings_;
    std::vector<FolderEntry> entries;
    if (!broken_.contains(path)) {
        for (const auto& [file, created] : folders_[path]) {
            entries.push_back({file, created});
        }
    }
    return entries;
}

std::optional<std::vector<FolderEntry>> VirtualFolderWatches::look(const std::string& path,
                                                                   const std::vector<std::string>& names) {
    ++looks_;
    if (broken_.contains(path)) {
        return std::nullopt;
    }
    std::vector<FolderEntry> entries;
    for (const std::string& name : names) {
        const auto& files = folders_[path];
        if (const auto found = files.find(appendingPathComponent(path, name)); found != files.end()) {
            entries.push_back({found->first, found->second});
        }
    }
    return entries;
}

void VirtualFolderWatches::put(const std::string& path) {
    put(path, loop_.wallClock());
}

void VirtualFolderWatches::put(const std::string& path, std::optional<double> created) {
    const std::string folder = deletingLastPathComponent(path);
    folders_[folder][path] = created;
    tell(folder, {lastPathComponent(path)});
}

void VirtualFolderWatches::take(const std::string& path) {
    const std::string folder = deletingLastPathComponent(path);
    folders_[folder].erase(path);
    tell(folder, {lastPathComponent(path)});
}

void VirtualFolderWatches::tell(const std::string& folder, std::vector<std::string> names) {
    const bool counted = namesChanges_ && !std::exchange(lostCount_, false);
    const FolderChange change{.names = counted ? std::move(names) : std::vector<std::string>(), .everything = !counted};
    for (const auto& [number, watch] : *watches_) {
        const auto& watched = static_cast<const Folder&>(*watch->folder);
        if (watched.path == folder && watched.isInPlace()) {
            loop_.post([weak = std::weak_ptr<Watch>(watch), change] {
                if (const auto living = weak.lock()) {
                    living->changed(change);
                }
            });
        }
    }
}

std::size_t VirtualFolderWatches::openFolders() const {
    return static_cast<std::size_t>(
        std::count_if(opened_.begin(), opened_.end(), [](const auto& folder) { return !folder.expired(); }));
}

std::multiset<std::string> VirtualFolderWatches::watched() const {
    std::multiset<std::string> paths;
    for (const auto& [number, watch] : *watches_) {
        paths.insert(static_cast<const Folder&>(*watch->folder).path);
    }
    return paths;
}

} // namespace rb
