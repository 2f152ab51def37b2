#include "desktops/linux/Utf8.h"

#include "platform/Unicode.h"

#include <cstdint>

namespace rb {

std::size_t utf8SequenceLength(std::string_view text, std::size_t position) {
    if (position >= text.size()) {
        return 0;
    }
    const auto byte = [&](std::size_t offset) { return static_cast<std::uint8_t>(text[position + offset]); };
    const std::uint8_t first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    // The second byte's range excludes overlong forms, surrogates and what lies beyond U+10FFFF.
    std::uint8_t low = 0x80;
    std::uint8_t high = 0xBF;
    if (first >= 0xC2 && first <= 0xDF) {
        length = 2;
    } else if (first >= 0xE0 && first <= 0xEF) {
        length = 3;
        low = first == 0xE0 ? 0xA0 : low;
        high = first == 0xED ? 0x9F : high;
    } else if (first >= 0xF0 && first <= 0xF4) {
        length = 4;
        low = first == 0xF0 ? 0x90 : low;
        high = first == 0xF4 ? 0x8F : high;
    } else {
        return 0;
    }
    if (position + length > text.size() || byte(1) < low || byte(1) > high) {
        return 0;
    }
    for (std::size_t offset = 2; offset < length; ++offset) {
        if ((byte(offset) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

bool isValidUtf8(std::string_view text) {
    for (std::size_t position = 0; position < text.size();) {
        if (const std::size_t plain = asciiEights(text.substr(position)); plain > 0) {
            position += plain;
            continue;
        }
        const std::size_t length = utf8SequenceLength(text, position);
        if (length == 0) {
            return false;
        }
        position += length;
    }
    return true;
}

std::string wellFormedUtf8(std::string_view text) {
    std::string result;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t length = utf8SequenceLength(text, position);
        result += length == 0 ? std::string_view("\uFFFD") : text.substr(position, length);
        position += length == 0 ? 1 : length;
    }
    return result;
}

} // namespace rb
