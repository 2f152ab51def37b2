#include "helpers/shared/Edid.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace rb {

namespace {

constexpr std::size_t blockSize = 128;
constexpr std::size_t firstDescriptor = 54;
constexpr std::size_t descriptorSize = 18;
constexpr std::size_t descriptorCount = 4;
constexpr std::uint8_t serialTag = 0xFF;
constexpr std::uint8_t nameTag = 0xFC;

// The descriptor's text: up to its line feed, without blanks at the end; other than printable ASCII is left out.
std::string textOf(std::span<const std::uint8_t> descriptor) {
    std::string text;
    for (const std::uint8_t byte : descriptor.subspan(5)) {
        if (byte == 0x0A || byte == 0) {
            break;
        }
        if (byte >= 0x20 && byte < 0x7F) {
            text += static_cast<char>(byte);
        }
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace

std::optional<Edid> parseEdid(std::span<const std::uint8_t> bytes) {
    constexpr std::array<std::uint8_t, 8> header{0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
    if (bytes.size() < blockSize || !std::equal(header.begin(), header.end(), bytes.begin())) {
        return std::nullopt;
    }
    const auto block = bytes.first(blockSize);
    if (std::accumulate(block.begin(), block.end(), 0U) % 256 != 0) {
        return std::nullopt;
    }
    Edid edid;
    edid.vendor = static_cast<std::uint32_t>(block[8] << 8U | block[9]);
    edid.product = static_cast<std::uint32_t>(block[11] << 8U | block[10]);
    edid.serial = static_cast<std::uint32_t>(block[12]) | static_cast<std::uint32_t>(block[13]) << 8U |
                  static_cast<std::uint32_t>(block[14]) << 16U | static_cast<std::uint32_t>(block[15]) << 24U;
    for (const unsigned shift : {10U, 5U, 0U}) {
        const std::uint32_t letter = edid.vendor >> shift & 0x1FU;
        edid.vendorLetters += letter >= 1 && letter <= 26 ? static_cast<char>('A' + letter - 1) : '?';
    }
    for (std::size_t i = 0; i < descriptorCount; ++i) {
        const auto descriptor = block.subspan(firstDescriptor + i * descriptorSize, descriptorSize);
        if (descriptor[0] != 0 || descriptor[1] != 0) {
            continue; // a timing
        }
        if (descriptor[3] == nameTag) {
            edid.name = textOf(descriptor);
        } else if (descriptor[3] == serialTag) {
            edid.serialText = textOf(descriptor);
        }
    }
    return edid;
}

} // namespace rb
