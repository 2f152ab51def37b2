#pragma once

#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

namespace rb {

// A valid EDID block of a display by its name.
inline std::vector<std::uint8_t> edidBlock(const std::string& name, std::uint8_t serial = 77) {
    std::vector<std::uint8_t> block(128);
    const std::vector<std::uint8_t> head{0,    0xFF, 0xFF, 0xFF, 0xFF,   0xFF, 0xFF, 0,
                                         0x10, 0xAC, 0xD9, 0x41, serial, 0,    0,    0};
    std::copy(head.begin(), head.end(), block.begin());
    block[54 + 3] = 0xFC;
    for (std::size_t i = 0; i < 13; ++i) {
        block[54 + 5 + i] = static_cast<std::uint8_t>(i < name.size() ? name[i] : i == name.size() ? '\n' : ' ');
    }
    block[127] = static_cast<std::uint8_t>(256 - std::accumulate(block.begin(), block.end() - 1, 0) % 256);
    return block;
}

} // namespace rb
