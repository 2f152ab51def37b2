#pragma once

#include "desktops/virtual/Files.h"
#include "platform/FileOperations.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace rb {

// Changes to the disk in memory.
class VirtualFileOperations final : public FileOperations {
public:
    explicit VirtualFileOperations(VirtualFiles& files)
        : files_(files) {}

    std::optional<FileFailure> moveItem(const std::string& from, const std::string& to) override;
    std::optional<FileFailure> copyItem(const std::string& from, const std::string& to) override;
    // "bytes of PATH".
    SharedBytes contents(const std::string& path) const override;
    std::optional<FileFailure> trashItem(const std::string& path) override;

    // From now on everything fails for this reason; empty ends it.
    void refuse(std::string reason) { refusal_ = std::move(reason); }
    // Once, between a name's choice and the next change.
    void before(std::function<void()> somethingElse) { before_ = std::move(somethingElse); }
    const std::vector<std::string>& trashed() const { return trashed_; }

private:
    std::optional<FileFailure> refusedFor(const std::string& from, const std::string& to);

    VirtualFiles& files_;
    std::string refusal_;
    std::function<void()> before_;
    std::vector<std::string> trashed_;
};

} // namespace rb
