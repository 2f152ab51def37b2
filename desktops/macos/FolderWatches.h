#pragma once

#include "platform/FolderWatches.h"

namespace rb {

// Folders through vnode events of a descriptor that is open for events only.
class MacFolderWatches final : public FolderWatches {
public:
    std::shared_ptr<OpenFolder> open(const std::string& path) override;
    Handle watch(std::shared_ptr<OpenFolder> folder, std::function<void(const FolderChange&)> changed) override;
    // The system puts a finished capture into its folder in one step, so nothing needs to be left out.
    std::vector<FolderEntry> list(const std::string& path) override;
    // By a listing: here no event names a file, so watching never asks.
    std::optional<std::vector<FolderEntry>> look(const std::string& path,
                                                 const std::vector<std::string>& names) override;
};

} // namespace rb
