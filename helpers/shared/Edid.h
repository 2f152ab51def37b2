#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace rb {

// What a display says of itself in its EDID.
struct Edid {
    std::uint32_t vendor = 0; // the manufacturer's three letters as the 16-bit number of the block
    std::uint32_t product = 0;
    std::uint32_t serial = 0;
    std::string vendorLetters = {}; // "DEL"
    std::string name = {};          // UTF-8; empty when the display doesn't tell
    std::string serialText = {};
};

// Nothing when the bytes are no EDID block (too short, another header, a wrong checksum).
std::optional<Edid> parseEdid(std::span<const std::uint8_t> bytes);

} // namespace rb
