#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace rb {

// Upper case of UTF-8 text for the alphabets found on keyboards: Latin (up to Extended-A), Greek and Cyrillic,
// letter by letter; other characters and malformed bytes stay as they are. ß becomes SS. Independent of the locale.
std::string uppercased(std::string_view text);

// How many ASCII characters it begins with, in whole eights: what can be passed over quickly in a long text.
inline std::size_t asciiEights(std::string_view text) {
    constexpr std::size_t step = sizeof(std::uint64_t);
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::size_t position = 0;
    std::uint64_t eight = 0;
    for (; text.size() - position >= step; position += step) {
        std::memcpy(&eight, text.data() + position, step);
        if ((eight & highBits) != 0) {
            break;
        }
    }
    return position;
}

} // namespace rb
