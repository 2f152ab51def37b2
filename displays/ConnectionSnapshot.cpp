#include "displays/ConnectionSnapshot.h"

#include "displays/Number.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

namespace rb {

namespace {

using Json = nlohmann::json;

constexpr std::size_t mostEntries = 256; // of any list; no machine has as many ports

// The member, or null when this is no object or has none.
const Json* member(const Json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return object.is_object() && found != object.end() ? &*found : nullptr;
}

std::optional<std::string> textOf(const Json& object, const char* key) {
    const Json* value = member(object, key);
    if (!value || !value->is_string() || value->get_ref<const std::string&>().empty()) {
        return std::nullopt;
    }
    return value->get<std::string>();
}

std::optional<double> numberOf(const Json& object, const char* key) {
    const Json* value = member(object, key);
    return value && value->is_number() ? std::optional(value->get<double>()) : std::nullopt;
}

// A text, or a number as text.
std::optional<std::string> descriptionOf(const Json& object, const char* key) {
    if (const auto number = numberOf(object, key)) {
        return plainText(*number);
    }
    return textOf(object, key);
}

bool flagOf(const Json& object, const char* key) {
    const Json* value = member(object, key);
    return value && value->is_boolean() && value->get<bool>();
}

std::optional<std::int64_t> integerOf(const Json& object, const char* key) {
    constexpr double most = 1e15;
    const auto number = numberOf(object, key);
    return number && std::abs(*number) < most ? std::optional(static_cast<std::int64_t>(*number)) : std::nullopt;
}

// The list's entries, read one by one; those that aren't objects are passed over.
template <typename Entry>
std::vector<Entry> listOf(const Json& object, const char* key, Entry (*read)(const Json&)) {
    std::vector<Entry> entries;
    const Json* list = member(object, key);
    if (!list || !list->is_array()) {
        return entries;
    }
    for (const Json& entry : *list) {
        if (entry.is_object() && entries.size() < mostEntries) {
            entries.push_back(read(entry));
        }
    }
    return entries;
}

DisplayLink readLink(const Json& json) {
    return {.monitorName = textOf(json, "monitorName"),
            .branchDevice = textOf(json, "branchDevice"),
            .sinkType = textOf(json, "sinkType"),
            .lanes = integerOf(json, "lanes"),
            .rate = descriptionOf(json, "rate")};
}

std::optional<std::string> readListing(const Json& json) {
    return textOf(json, "model");
}

Cable readCable(const Json& json) {
    Cable cable{.maxWatts = numberOf(json, "maxWatts"),
                .speed = textOf(json, "speed"),
                .vendorName = textOf(json, "vendorName"),
                .currentRating = descriptionOf(json, "currentRating"),
                .maxVolts = descriptionOf(json, "maxVolts")};
    if (const Json* certification = member(json, "certification")) {
        cable.listings = listOf<std::optional<std::string>>(*certification, "listings", readListing);
    }
    const auto vendor = integerOf(json, "vendorID").value_or(0);
    cable.vendorID =
        vendor >= 0 && vendor <= std::numeric_limits<std::uint32_t>::max() ? static_cast<std::uint32_t>(vendor) : 0;
    return cable;
}

PowerSource readPowerSource(const Json& json) {
    PowerSource source{.name = textOf(json, "name").value_or(""), .maxPowerW = numberOf(json, "maxPowerW")};
    if (const Json* negotiated = member(json, "negotiated"); negotiated && negotiated->is_object()) {
        source.negotiated = NegotiatedPower{.powerW = numberOf(*negotiated, "powerW").value_or(0),
                                            .voltageV = numberOf(*negotiated, "voltageV").value_or(0),
                                            .currentA = numberOf(*negotiated, "currentA").value_or(0)};
    }
    return source;
}

AttachedDevice readDevice(const Json& json) {
    return {.name = textOf(json, "name"), .speed = textOf(json, "speed")};
}

Port readPort(const Json& json) {
    Port port{.name = textOf(json, "name"),
              .connectionActive = flagOf(json, "connectionActive"),
              .videoOnly = flagOf(json, "videoOnly"),
              .displays = listOf<DisplayLink>(json, "displays", readLink),
              .powerSources = listOf<PowerSource>(json, "powerSources", readPowerSource),
              .devices = listOf<AttachedDevice>(json, "devices", readDevice)};
    if (const Json* transports = member(json, "transports")) {
        const Json* active = member(*transports, "active");
        for (const Json& token : active && active->is_array() ? *active : Json::array()) {
            if (token.is_string() && port.activeTransports.size() < mostEntries) {
                port.activeTransports.push_back(token.get<std::string>());
            }
        }
    }
    if (const Json* cable = member(json, "cable"); cable && cable->is_object()) {
        port.cable = readCable(*cable);
    }
    if (const Json* charging = member(json, "charging")) {
        port.chargingSummary = textOf(*charging, "summary");
    }
    return port;
}

} // namespace

std::optional<ConnectionSnapshot> parseSnapshot(std::string_view text) {
    const Json json = Json::parse(text, nullptr, false);
    if (!json.is_object()) {
        return std::nullopt;
    }
    return ConnectionSnapshot{.ports = listOf<Port>(json, "ports", readPort), .error = textOf(json, "error")};
}

std::string transportLabel(const std::vector<std::string>& tokens) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> texts{{{"USB2", "USB 2.0 数据"},
                                                                                  {"USB3", "USB 3 数据"},
                                                                                  {"CIO", "Thunderbolt / USB4"},
                                                                                  {"DisplayPort", "DisplayPort 视频"}}};
    std::string label;
    for (const std::string& token : tokens) {
        if (token == "CC") {
            continue;
        }
        const auto* known =
            std::find_if(texts.begin(), texts.end(), [&token](const auto& entry) { return entry.first == token; });
        label += label.empty() ? "" : " · ";
        label += known != texts.end() ? known->second : std::string_view(token);
    }
    return label;
}

const PowerSource* powerSource(const std::vector<PowerSource>& sources) {
    const auto onlyOne = [&sources](auto&& fits) -> const PowerSource* {
        const auto found = std::find_if(sources.begin(), sources.end(), fits);
        return std::count_if(sources.begin(), sources.end(), fits) == 1 ? &*found : nullptr;
    };
    if (const auto* powerDelivery = onlyOne([](const PowerSource& source) { return source.name == "USB-PD"; })) {
        return powerDelivery;
    }
    if (const auto* negotiated = onlyOne([](const PowerSource& source) { return source.negotiated.has_value(); })) {
        return negotiated;
    }
    return sources.size() == 1 ? &sources.front() : nullptr;
}

const Port* portForDisplay(const DisplayRow& row, const std::vector<DisplayRow>& rows,
                           const ConnectionSnapshot& snapshot) {
    const Port* found = nullptr;
    for (const Port& port : snapshot.ports) {
        if (std::any_of(port.displays.begin(), port.displays.end(),
                        [&row](const DisplayLink& link) { return link.monitorName == row.name; })) {
            if (found) {
                return nullptr;
            }
            found = &port;
        }
    }
    const auto namesakes =
        std::count_if(rows.begin(), rows.end(), [&row](const DisplayRow& other) { return other.name == row.name; });
    return namesakes == 1 ? found : nullptr;
}

std::string shortSpeed(const std::optional<std::string>& speed) {
    if (!speed || speed->empty()) {
        return "未知";
    }
    // By hand: a number, optional blanks, and the unit. std::regex recurses once for each character.
    const std::string& text = *speed;
    const auto digit = [&text](std::size_t at) { return at < text.size() && text[at] >= '0' && text[at] <= '9'; };
    for (std::size_t start = 0; start < text.size(); ++start) {
        if (!digit(start)) {
            continue;
        }
        std::size_t end = start;
        const auto skipDigits = [&] {
            while (digit(end)) {
                ++end;
            }
        };
        skipDigits();
        const std::size_t whole = end;
        if (end < text.size() && text[end] == '.' && digit(end + 1)) {
            ++end;
            skipDigits();
        }
        while (end < text.size() && std::string_view(" \t\n\r\v\f").find(text[end]) != std::string_view::npos) {
            ++end;
        }
        const std::string_view unit = std::string_view(text).substr(end, 4);
        if (unit == "Gbps" || unit == "Mbps") {
            return text.substr(start, end + 4 - start);
        }
        // No match can begin inside this number's whole part either.
        start = whole - 1;
    }
    return text;
}

} // namespace rb
