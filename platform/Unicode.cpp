#include "platform/Unicode.h"

namespace rb {

namespace {

bool within(char32_t letter, char32_t first, char32_t last) {
    return letter >= first && letter <= last;
}

// Letters of two UTF-8 bytes (U+0080…U+07FF).
char32_t upperOf(char32_t letter) {
    if ((within(letter, 0xE0, 0xFE) && letter != 0xF7) || within(letter, 0x3B1, 0x3C9) ||
        within(letter, 0x430, 0x44F)) {
        return letter == 0x3C2 ? 0x3A3 : letter - 0x20; // the final sigma has the capital of the other one
    }
    if (letter == 0xFF) {
        return 0x178;
    }
    if (within(letter, 0x450, 0x45F)) {
        return letter - 0x50;
    }
    // Pairs of a capital and its small letter, the capital even in most of Latin Extended-A and odd in the rest.
    const bool evenCapitals = within(letter, 0x100, 0x137) || within(letter, 0x14A, 0x177) ||
                              within(letter, 0x460, 0x481) || within(letter, 0x48A, 0x4BF) ||
                              within(letter, 0x4D0, 0x52F);
    const bool oddCapitals = within(letter, 0x139, 0x148) || within(letter, 0x179, 0x17E);
    if (letter == 0x131) {
        return U'I';
    }
    if ((evenCapitals && letter % 2 == 1) || (oddCapitals && letter % 2 == 0)) {
        return letter - 1;
    }
    return letter;
}

} // namespace

std::string uppercased(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 'a' && byte <= 'z') {
            result.push_back(static_cast<char>(byte - 0x20));
            continue;
        }
        const bool startsPair = byte >= 0xC2 && byte <= 0xDF && i + 1 < text.size() &&
                                (static_cast<unsigned char>(text[i + 1]) & 0xC0U) == 0x80U;
        if (!startsPair) {
            result.push_back(text[i]);
            continue;
        }
        ++i;
        const char32_t letter =
            (static_cast<char32_t>(byte & 0x1FU) << 6U) | (static_cast<unsigned char>(text[i]) & 0x3FU);
        if (letter == 0xDF) {
            result += "SS";
            continue;
        }
        const char32_t upper = upperOf(letter);
        if (upper < 0x80) {
            result.push_back(static_cast<char>(upper));
        } else {
            result.push_back(static_cast<char>(0xC0U | (upper >> 6U)));
            result.push_back(static_cast<char>(0x80U | (upper & 0x3FU)));
        }
    }
    return result;
}

} // namespace rb
