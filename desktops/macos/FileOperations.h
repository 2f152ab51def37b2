#pragma once

#include "platform/FileOperations.h"

namespace rb {

// NSFileManager, which refuses to replace what is there and copies across volumes before it removes.
class MacFileOperations final : public FileOperations {
public:
    std::optional<FileFailure> moveItem(const std::string& from, const std::string& to) override;
    std::optional<FileFailure> copyItem(const std::string& from, const std::string& to) override;
    SharedBytes contents(const std::string& path) const override;
    std::optional<FileFailure> trashItem(const std::string& path) override;
};

} // namespace rb
