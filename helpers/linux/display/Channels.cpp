#include "helpers/linux/display/Channels.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <fstream>

namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t blockSize = 128;
constexpr std::size_t longestEdid = 32 * blockSize;

// The number of "i2c-5".
std::optional<int> busNumber(const std::string& name) {
    int number = 0;
    const std::string digits = name.starts_with("i2c-") ? name.substr(4) : "";
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() && end == digits.data() + digits.size() && number >= 0 ? std::optional(number)
                                                                                       : std::nullopt;
}

// A DisplayPort socket has its bus as a folder, others link to it.
std::optional<int> busOf(const fs::path& connector) {
    std::error_code error;
    for (fs::directory_iterator entry(connector, error), end; !error && entry != end; entry.increment(error)) {
        if (const auto number = busNumber(entry->path().filename().string())) {
            return number;
        }
    }
    const fs::path target = fs::read_symlink(connector / "ddc", error);
    return error ? std::nullopt : busNumber(target.filename().string());
}

std::vector<std::uint8_t> bytesOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::vector<std::uint8_t> bytes(longestEdid);
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return bytes;
}

std::string uuidOf(int bus, const Edid& edid) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "i2c-%d:%s:%04X:%08X", bus, edid.vendorLetters.c_str(), edid.product,
                  edid.serial);
    return text.data();
}

bool sameBlock(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
    return a.size() >= blockSize && b.size() >= blockSize && std::equal(a.begin(), a.begin() + blockSize, b.begin());
}

} // namespace

std::vector<Channel> readChannels(const fs::path& root) {
    std::vector<Channel> channels;
    std::vector<int> ownPanels;
    std::error_code error;
    for (fs::directory_iterator entry(root / "sys/class/drm", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const std::size_t dash = name.find('-');
        const std::string socket = dash == std::string::npos ? "" : name.substr(dash + 1);
        const auto bus = socket.empty() ? std::nullopt : busOf(entry->path());
        if (!bus) {
            continue;
        }
        if (socket.starts_with("eDP") || socket.starts_with("LVDS") || socket.starts_with("DSI")) {
            ownPanels.push_back(*bus);
            continue;
        }
        std::vector<std::uint8_t> bytes = bytesOf(entry->path() / "edid");
        const auto edid = parseEdid(bytes);
        channels.push_back({.bus = *bus, .edid = std::move(bytes), .uuid = edid ? uuidOf(*bus, *edid) : std::string()});
    }
    std::erase_if(channels, [&ownPanels](const Channel& channel) {
        return std::find(ownPanels.begin(), ownPanels.end(), channel.bus) != ownPanels.end();
    });
    return channels;
}

std::optional<Channel> channelNamed(const std::string& uuid, const std::vector<Channel>& channels) {
    const auto bus = busNumber(uuid.substr(0, uuid.find(':')));
    if (!bus || uuid.find(':') == std::string::npos) {
        return std::nullopt;
    }
    // Two sockets may share a bus.
    bool external = false;
    bool taken = false;
    for (const Channel& channel : channels) {
        if (channel.bus == *bus && channel.uuid == uuid) {
            return channel;
        }
        external = external || channel.bus == *bus;
        taken = taken || (channel.bus == *bus && !channel.uuid.empty());
    }
    return external && !taken ? std::optional(Channel{.bus = *bus, .uuid = uuid}) : std::nullopt;
}

std::vector<ListEntry> matchOutputs(const RandrState& state, const std::vector<Channel>& channels) {
    std::vector<ListEntry> list;
    const auto outputs = state.activeOutputs();
    for (const RandrOutput* output : outputs) {
        const auto twins = std::count_if(outputs.begin(), outputs.end(), [&](const RandrOutput* other) {
            return sameBlock(other->edidBytes, output->edidBytes);
        });
        const auto fits = [&](const Channel& channel) { return sameBlock(channel.edid, output->edidBytes); };
        if (output->isBuiltin() || twins != 1 || std::count_if(channels.begin(), channels.end(), fits) != 1) {
            continue;
        }
        list.push_back({output->id, std::find_if(channels.begin(), channels.end(), fits)->uuid});
    }
    return list;
}

} // namespace rb
