#pragma once

#include "platform/Log.h"

#include <mutex>
#include <string>
#include <string_view>

namespace rb {

// The line as it is written: the prefix, the text with control characters and malformed bytes escaped (a file's
// name must not forge a line or drive a terminal), a line end.
std::string logLine(std::string_view text);

// Diagnostics on standard error.
class LinuxLog final : public Log {
public:
    void write(const std::string& line) override;

private:
    std::mutex mutex_;
};

} // namespace rb
