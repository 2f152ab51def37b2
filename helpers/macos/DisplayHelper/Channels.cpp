#include "helpers/macos/DisplayHelper/Channels.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace rb {

namespace {

std::string identity(const Edid& edid) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%s:%04X:%08X", edid.vendorLetters.c_str(), edid.product, edid.serial);
    return text.data();
}

bool sameModel(const OnlineDisplay& a, const OnlineDisplay& b) {
    return a.vendor == b.vendor && a.model == b.model && a.serial == b.serial;
}

} // namespace

std::string channelName(const DisplayChannel& channel) {
    return channel.edid ? identity(*channel.edid) + "@" + channel.path : std::string();
}

std::vector<NamedDisplay> matchDisplays(const std::vector<OnlineDisplay>& displays,
                                        const std::vector<DisplayChannel>& channels) {
    std::vector<NamedDisplay> named;
    for (const OnlineDisplay& display : displays) {
        const auto twins = std::count_if(displays.begin(), displays.end(),
                                         [&](const OnlineDisplay& other) { return sameModel(display, other); });
        const auto fits = [&](const DisplayChannel& channel) {
            return channel.edid && channel.edid->vendor == display.vendor && channel.edid->product == display.model &&
                   channel.edid->serial == display.serial;
        };
        if (display.builtin || twins != 1 || std::count_if(channels.begin(), channels.end(), fits) != 1) {
            continue;
        }
        named.push_back({display.id, channelName(*std::find_if(channels.begin(), channels.end(), fits))});
    }
    return named;
}

std::optional<std::size_t> channelNamed(const std::string& uuid, const std::vector<DisplayChannel>& channels) {
    const std::size_t at = uuid.find('@');
    if (at == std::string::npos) {
        return std::nullopt;
    }
    const std::string who = uuid.substr(0, at);
    const std::string path = uuid.substr(at + 1);
    const auto index = [&](auto found) {
        return found == channels.end() ? std::nullopt
                                       : std::optional(static_cast<std::size_t>(found - channels.begin()));
    };
    const auto is = [&](const DisplayChannel& channel) { return channel.edid && identity(*channel.edid) == who; };
    const auto there = std::find_if(channels.begin(), channels.end(),
                                    [&](const DisplayChannel& channel) { return channel.path == path; });
    if (there != channels.end() && (!there->edid || is(*there))) {
        return index(there);
    }
    return std::count_if(channels.begin(), channels.end(), is) == 1
               ? index(std::find_if(channels.begin(), channels.end(), is))
               : std::nullopt;
}

} // namespace rb
