#pragma once

#include "helpers/linux/shared/Randr.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Which I2C bus leads to which display, read from the kernel without touching any bus.
namespace rb {

// The bus of a socket for external displays.
struct Channel {
    int bus = -1;
    std::vector<std::uint8_t> edid = {};
    // "i2c-5:DEL:41D9:0000004D": the bus and the display on it; empty when there is none.
    std::string uuid = {};
};

// Of every socket that has a bus, whether or not a display is on it. A bus that a laptop's own panel hangs on is left
// out. `root` is "/" but in tests.
std::vector<Channel> readChannels(const std::filesystem::path& root);

// The channel that the identifier names. A display in standby may have left its socket; then the socket's bus alone
// counts. A bus on which another display is now is nobody's, and one that belongs to no socket is none of ours.
std::optional<Channel> channelNamed(const std::string& uuid, const std::vector<Channel>& channels);

struct ListEntry {
    std::uint32_t output = 0;
    std::string uuid = {};
};
// The outputs with a channel of their own: matched by EDID, twins left out because nobody knows which is which.
std::vector<ListEntry> matchOutputs(const RandrState& state, const std::vector<Channel>& channels);

} // namespace rb
