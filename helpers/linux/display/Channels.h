#pragma once

#include "helpers/linux/shared/Randr.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Which I2C bus leads to which display, read from the kernel without touching any bus.
namespace rb {

struct Channel {
    int bus = -1;
    std::vector<std::uint8_t> edid = {};
    // "i2c-5:DEL:41D9:0000004D": the bus and the display that was on it.
    std::string uuid = {};
};

// Of every socket with a display, a laptop's own panel left out. `root` is "/" but in tests.
std::vector<Channel> readChannels(const std::filesystem::path& root);

// The channel that the identifier names. A display in standby may have left its socket; then the bus alone counts, but
// a bus on which another display is now is nobody's.
std::optional<Channel> channelNamed(const std::string& uuid, const std::vector<Channel>& channels);

struct ListEntry {
    std::uint32_t output = 0;
    std::string uuid = {};
};
// The outputs with a channel of their own: matched by EDID, twins left out because nobody knows which is which.
std::vector<ListEntry> matchOutputs(const RandrState& state, const std::vector<Channel>& channels);

} // namespace rb
