#pragma once

#include "platform/Files.h"

namespace rb {

// Files by the shared MIME database; this system shows no directory as one file.
class LinuxFiles final : public Files {
public:
    FileFacts facts(const std::string& path) const override;
    std::string homeDirectory() const override;
    // As xdg-user-dirs has it.
    std::string desktopDirectory() const override;
    std::optional<std::string> createEmptyFile(const std::string& path) override;
};

} // namespace rb
