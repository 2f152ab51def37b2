#include "clipboard/ClipText.h"

#include "platform/Unicode.h"

#include <algorithm>
#include <cstdint>

namespace rb {

namespace {

struct Character {
    char32_t code = 0;
    std::size_t bytes = 1;
};

Character characterAt(std::string_view text, std::size_t position) {
    const auto byte = [&](std::size_t offset) { return static_cast<std::uint8_t>(text[position + offset]); };
    const std::uint8_t first = byte(0);
    std::size_t length = 1;
    if (first >= 0xC0) {
        length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    }
    if (length == 1 || position + length > text.size()) {
        return {first};
    }
    char32_t code = first & (0xFFU >> (length + 1));
    for (std::size_t offset = 1; offset < length; ++offset) {
        if ((byte(offset) & 0xC0U) != 0x80U) {
            return {first};
        }
        code = (code << 6U) | (byte(offset) & 0x3FU);
    }
    return {code, length};
}

std::size_t unitsOf(const Character& character) {
    return character.code > 0xFFFF ? 2 : 1;
}

bool isSpace(char32_t code) {
    return code == ' ' || code == '\t' || code == 0xA0 || code == 0x1680 || (code >= 0x2000 && code <= 0x200A) ||
           code == 0x202F || code == 0x205F || code == 0x3000;
}

bool isLineEnd(char32_t code) {
    return (code >= 0x0A && code <= 0x0D) || code == 0x85 || code == 0x2028 || code == 0x2029;
}

// Where the character that ends before that position begins.
std::size_t startOfCharacterBefore(std::string_view text, std::size_t end) {
    constexpr std::size_t longest = 4;
    for (std::size_t length = 2; length <= std::min(longest, end); ++length) {
        if (characterAt(text, end - length).bytes == length) {
            return end - length;
        }
    }
    return end - 1;
}

// From both ends only, since texts are long.
template <typename Test>
std::string_view trimmed(std::string_view text, Test goes) {
    std::size_t begin = 0;
    while (begin < text.size()) {
        const Character character = characterAt(text, begin);
        if (!goes(character.code)) {
            break;
        }
        begin += character.bytes;
    }
    std::size_t end = text.size();
    while (end > begin) {
        const std::size_t start = startOfCharacterBefore(text, end);
        if (!goes(characterAt(text, start).code)) {
            break;
        }
        end = start;
    }
    return text.substr(begin, end - begin);
}

} // namespace

std::size_t utf16Length(std::string_view text) {
    std::size_t units = 0;
    for (std::size_t position = 0; position < text.size();) {
        if (const std::size_t plain = asciiEights(text.substr(position)); plain > 0) {
            units += plain;
            position += plain;
            continue;
        }
        const Character character = characterAt(text, position);
        units += unitsOf(character);
        position += character.bytes;
    }
    return units;
}

std::string_view utf16Prefix(std::string_view text, std::size_t units) {
    std::size_t position = 0;
    while (position < text.size()) {
        const Character character = characterAt(text, position);
        if (unitsOf(character) > units) {
            break;
        }
        units -= unitsOf(character);
        position += character.bytes;
    }
    return text.substr(0, position);
}

std::string_view trimmedWhole(std::string_view text) {
    return trimmed(text, [](char32_t code) { return isSpace(code) || isLineEnd(code); });
}

std::string_view trimmedLine(std::string_view line) {
    return trimmed(line, isSpace);
}

std::string_view firstLineNotBlank(std::string_view text) {
    std::size_t start = 0;
    for (std::size_t position = 0; position < text.size();) {
        const Character character = characterAt(text, position);
        if (isLineEnd(character.code)) {
            const std::string_view line = trimmedLine(text.substr(start, position - start));
            if (!line.empty()) {
                return line;
            }
            start = position + character.bytes;
        }
        position += character.bytes;
    }
    return trimmedLine(text.substr(start));
}

} // namespace rb
