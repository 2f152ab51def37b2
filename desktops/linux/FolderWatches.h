#pragma once

#include "platform/FolderWatches.h"

namespace rb {

// Folders through inotify. The watch is on the folder itself, not on its path.
class LinuxFolderWatches final : public FolderWatches {
public:
    std::shared_ptr<OpenFolder> open(const std::string& path) override;
    Handle watch(std::shared_ptr<OpenFolder> folder, std::function<void(const FolderChange&)> changed) override;
    // A file that is empty or open for writing in any program is left out; it is complete when the writer closes it,
    // which the watch tells. Where the file system can't tell (leases), a file counts as complete.
    std::vector<FolderEntry> list(const std::string& path) override;
    std::optional<std::vector<FolderEntry>> look(const std::string& path,
                                                 const std::vector<std::string>& names) override;
};

} // namespace rb
