#pragma once

#include <cstdint>
#include <string>

namespace rb {

// Sizes of files as the system writes them for its user.
class ByteCounts {
public:
    virtual ~ByteCounts() = default;
    virtual std::string fileStyle(std::int64_t bytes) const = 0;
};

// In decimal units: "999 字节", "12 KB", "2.1 MB". For desktops without a formatter of their own.
std::string plainByteCount(std::int64_t bytes);

} // namespace rb
