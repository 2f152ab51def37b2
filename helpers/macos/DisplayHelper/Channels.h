#pragma once

#include "helpers/shared/Edid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Which control channel leads to which display.
namespace rb {

// A display's I2C service.
struct DisplayChannel {
    std::string path = {};                   // of the service in the registry
    std::optional<Edid> edid = std::nullopt; // of the display on it, when that answers
};

struct OnlineDisplay {
    std::uint32_t id = 0;
    std::uint32_t vendor = 0;
    std::uint32_t model = 0;
    std::uint32_t serial = 0;
    bool builtin = false;
};

// "DEL:41D9:0000004D@IOService:/…": the display and the service that it was on.
std::string channelName(const DisplayChannel& channel);

struct NamedDisplay {
    std::uint32_t id = 0;
    std::string uuid = {};
};
// The displays with a channel of their own: matched by vendor, model and serial number, twins left out because nobody
// knows which is which.
std::vector<NamedDisplay> matchDisplays(const std::vector<OnlineDisplay>& displays,
                                        const std::vector<DisplayChannel>& channels);

// The channel that the name means. A display in standby may not tell its EDID any more; then the place counts. A place
// on which another display is now is not it, but the same display may have moved.
std::optional<std::size_t> channelNamed(const std::string& uuid, const std::vector<DisplayChannel>& channels);

} // namespace rb
