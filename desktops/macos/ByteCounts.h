#pragma once

#include "platform/ByteCounts.h"

namespace rb {

class MacByteCounts final : public ByteCounts {
public:
    std::string fileStyle(std::int64_t bytes) const override;
};

} // namespace rb
