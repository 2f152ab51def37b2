#pragma once

#include "platform/Files.h"

namespace rb {

class MacFiles final : public Files {
public:
    FileFacts facts(const std::string& path) const override;
    std::string homeDirectory() const override;
    std::string desktopDirectory() const override;
    std::optional<std::string> createEmptyFile(const std::string& path) override;
};

} // namespace rb
