#pragma once

#include "platform/FileOperations.h"

namespace rb {

// Changes to files by the kernel's exclusive calls. Across file systems a move copies into a hidden folder beside the
// target, compares, puts the copy in place and only then removes what it copied.
class LinuxFileOperations final : public FileOperations {
public:
    std::optional<FileFailure> moveItem(const std::string& from, const std::string& to) override;
    std::optional<FileFailure> copyItem(const std::string& from, const std::string& to) override;
    SharedBytes contents(const std::string& path) const override;
    // By the rules that file managers share: on the file's own file system where that has a Trash, else in the home's.
    std::optional<FileFailure> trashItem(const std::string& path) override;
};

} // namespace rb
