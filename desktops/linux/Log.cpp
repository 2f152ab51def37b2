#include "desktops/linux/Log.h"

#include "desktops/linux/Utf8.h"

#include <cerrno>
#include <cstdint>
#include <unistd.h>

namespace rb {

namespace {

void appendEscaped(std::string& line, std::uint8_t byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    line += "\\x";
    line += digits[byte >> 4U];
    line += digits[byte & 0xFU];
}

// The second control block (U+0080 to U+009F) counts: some terminals obey it.
bool isControl(std::string_view sequence) {
    const auto first = static_cast<std::uint8_t>(sequence[0]);
    return first < 0x20 || first == 0x7F || (first == 0xC2 && static_cast<std::uint8_t>(sequence[1]) < 0xA0);
}

} // namespace

std::string logLine(std::string_view text) {
    std::string line = "Rook Bay: ";
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t length = utf8SequenceLength(text, position);
        const std::string_view sequence = text.substr(position, length == 0 ? 1 : length);
        if (length == 0 || isControl(sequence)) {
            for (const char byte : sequence) {
                appendEscaped(line, static_cast<std::uint8_t>(byte));
            }
        } else {
            line += sequence;
        }
        position += sequence.size();
    }
    line += '\n';
    return line;
}

void LinuxLog::write(const std::string& line) {
    const std::string text = logLine(line);
    const std::lock_guard lock(mutex_);
    for (std::size_t written = 0; written < text.size();) {
        const ssize_t count = ::write(STDERR_FILENO, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return; // Nobody reads our diagnostics; there is no other place for them.
        }
        written += static_cast<std::size_t>(count);
    }
}

} // namespace rb
