#pragma once

#include "platform/ByteCounts.h"

namespace rb {

class LinuxByteCounts final : public ByteCounts {
public:
    std::string fileStyle(std::int64_t bytes) const override { return plainByteCount(bytes); }
};

} // namespace rb
