#pragma once

#include "platform/Files.h"

namespace rb {

class MacFiles final : public Files {
public:
    FileFacts facts(const std::string& path) const override;
    std::string homeDirectory() const override;
};

} // namespace rb
