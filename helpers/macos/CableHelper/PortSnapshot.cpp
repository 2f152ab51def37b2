#include "helpers/macos/CableHelper/PortSnapshot.h"

#include "helpers/shared/ConnectionJson.h"
#include "helpers/shared/Edid.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <tuple>

namespace rb {

namespace {

using Json = nlohmann::json;

constexpr double milli = 1e-3;

const Json* find(const Json& properties, const char* key) {
    const auto found = properties.is_object() ? properties.find(key) : properties.end();
    return found != properties.end() ? &*found : nullptr;
}

std::optional<std::string> text(const Json& properties, const char* key) {
    const Json* value = find(properties, key);
    return value != nullptr && value->is_string() && !value->get_ref<const std::string&>().empty()
               ? std::optional(value->get<std::string>())
               : std::nullopt;
}

// Finite and above 0: the registry writes 0 for what it doesn't know.
std::optional<double> number(const Json& properties, const char* key) {
    const Json* value = find(properties, key);
    if (value == nullptr || !value->is_number()) {
        return std::nullopt;
    }
    const auto known = value->get<double>();
    return std::isfinite(known) && known > 0 ? std::optional(known) : std::nullopt;
}

std::vector<std::string> strings(const Json& properties, const char* key) {
    std::vector<std::string> found;
    const Json* value = find(properties, key);
    for (const Json& item : value != nullptr && value->is_array() ? *value : Json::array()) {
        if (item.is_string()) {
            found.push_back(item.get<std::string>());
        }
    }
    return found;
}

void visit(const RegistryEntry& entry, const std::function<void(const RegistryEntry&)>& see) {
    see(entry);
    for (const RegistryEntry& child : entry.children) {
        visit(child, see);
    }
}

std::string portName(const RegistryEntry& port) {
    const auto type = text(port.properties, RegistryName::PortType);
    if (!type) {
        return text(port.properties, RegistryName::PortDescription).value_or(port.name);
    }
    const auto index = number(port.properties, RegistryName::PortNumber);
    const std::string suffix =
        index && *index >= 1 && *index < 100 ? " " + std::to_string(static_cast<int>(*index)) : "";
    return *type + " 端口" + suffix;
}

bool isVideoOnly(const RegistryEntry& port) {
    const auto type = text(port.properties, RegistryName::PortType);
    return type && (type->starts_with("HDMI") || type->starts_with("DisplayPort"));
}

// A word of an answer to Discover Identity: four bytes, the lowest first, or a number.
std::optional<std::uint32_t> word(const Json& value) {
    if (value.is_number_unsigned() || value.is_number_integer()) {
        return static_cast<std::uint32_t>(value.get<std::uint64_t>());
    }
    if (!value.is_binary() || value.get_binary().size() != 4) {
        return std::nullopt;
    }
    std::uint32_t result = 0;
    for (std::size_t index = 0; index < 4; ++index) {
        result |= static_cast<std::uint32_t>(value.get_binary()[index]) << (8 * index);
    }
    return result;
}

std::optional<Json> cableOf(const RegistryEntry& component) {
    // The marker in the plug at this end.
    if (text(component.properties, RegistryName::ComponentName).value_or(component.name) != "SOP'") {
        return std::nullopt;
    }
    const Json* metadata = find(component.properties, RegistryName::Metadata);
    const Json* words = find(component.properties, RegistryName::IdentityObjects);
    if (words == nullptr && metadata != nullptr) {
        words = find(*metadata, RegistryName::IdentityObjects);
    }
    if (words == nullptr || !words->is_array() || words->empty()) {
        return std::nullopt;
    }
    // ID header, certification, product, and then the cable's own object.
    constexpr std::size_t cableObject = 3;
    const auto object = words->size() > cableObject ? word((*words)[cableObject]) : std::nullopt;
    Json json = cableJson(word((*words)[0]).value_or(0), object.value_or(0));
    return json.is_null() ? std::nullopt : std::optional(std::move(json));
}

std::optional<Json> powerSourceOf(const RegistryEntry& source) {
    const auto name = text(source.properties, RegistryName::PowerSourceName);
    if (!name) {
        return std::nullopt;
    }
    Json json{{"name", *name}};
    if (const Json* contract = find(source.properties, RegistryName::PowerContract)) {
        const auto volts = number(*contract, RegistryName::Millivolts);
        const auto amps = number(*contract, RegistryName::Milliamps);
        if (volts && amps) {
            const double watts = number(*contract, RegistryName::Milliwatts).value_or(*volts * *amps * milli) * milli;
            json["negotiated"] = {{"powerW", watts}, {"voltageV", *volts * milli}, {"currentA", *amps * milli}};
        }
    }
    double most = 0;
    const Json* options = find(source.properties, RegistryName::PowerOptions);
    for (const Json& option : options != nullptr && options->is_array() ? *options : Json::array()) {
        most = std::max(most, number(option, RegistryName::Milliwatts).value_or(0) * milli);
    }
    if (most > 0) {
        json["maxPowerW"] = most;
    }
    // A source that offers nothing is one of the kinds that the port could have had.
    return json.size() > 1 ? std::optional(json) : std::nullopt;
}

std::optional<Json> displayLinkOf(const RegistryEntry& transport) {
    if (text(transport.properties, RegistryName::TransportType) != "DisplayPort") {
        return std::nullopt;
    }
    Json link = Json::object();
    const Json* metadata = find(transport.properties, RegistryName::Metadata);
    const auto told = [&](const char* key) {
        auto value = text(transport.properties, key);
        return value || metadata == nullptr ? value : text(*metadata, key);
    };
    const Json* bytes = find(transport.properties, RegistryName::Edid);
    const auto edid = bytes != nullptr && bytes->is_binary() ? parseEdid(bytes->get_binary()) : std::nullopt;
    if (edid && !edid->name.empty()) {
        link["monitorName"] = edid->name;
    } else if (const auto name = told(RegistryName::ProductName)) {
        link["monitorName"] = *name;
    }
    for (const auto& [field, key] :
         {std::pair("branchDevice", RegistryName::BranchDevice), std::pair("sinkType", RegistryName::SinkType),
          std::pair("rate", RegistryName::LinkRate)}) {
        if (const auto value = told(key)) {
            link[field] = *value;
        }
    }
    if (const auto lanes = number(transport.properties, RegistryName::LaneCount); lanes && *lanes >= 1) {
        link["lanes"] = static_cast<int>(std::min(*lanes, 4.0));
    }
    return link.empty() ? std::nullopt : std::optional(link);
}

std::optional<std::string> usbSpeed(const Json& properties) {
    if (const auto bits = number(properties, RegistryName::UsbLinkSpeed)) {
        return speedText(*bits);
    }
    constexpr std::array<double, 6> speeds{1.5e6, 12e6, 480e6, 5e9, 10e9, 20e9};
    const Json* value = find(properties, RegistryName::UsbSpeed);
    const auto speed = value != nullptr && value->is_number_integer() ? value->get<std::uint64_t>() : speeds.size();
    return speed < speeds.size() ? std::optional(speedText(speeds.at(speed))) : std::nullopt;
}

std::string chargingSummary(const BatteryFacts& battery) {
    return battery.charging ? "Charging" : battery.charged ? "Fully charged" : "Plugged in, charging on hold";
}

Json portJson(const RegistryEntry& port, const ConnectionFacts& facts) {
    const std::vector<std::string> transports = strings(port.properties, RegistryName::TransportsActive);
    const Json* active = find(port.properties, RegistryName::ConnectionActive);
    const bool connected = active != nullptr && active->is_boolean() ? active->get<bool>() : !transports.empty();
    Json json{{"name", portName(port)}, {"connectionActive", connected}};
    if (!connected) {
        return json;
    }
    json["transports"] = {{"active", transports}};
    if (isVideoOnly(port)) {
        json["videoOnly"] = true;
    }
    const bool video = std::find(transports.begin(), transports.end(), "DisplayPort") != transports.end();
    visit(port, [&](const RegistryEntry& entry) {
        if (auto cable = cableOf(entry); cable && !json.contains("cable")) {
            json["cable"] = std::move(*cable);
        }
        if (auto source = powerSourceOf(entry)) {
            json["powerSources"].push_back(std::move(*source));
        }
        if (auto link = displayLinkOf(entry); link && (video || isVideoOnly(port))) {
            json["displays"].push_back(std::move(*link));
        }
    });
    if (json.contains("powerSources") && facts.battery && facts.battery->onExternalPower) {
        json["charging"] = {{"summary", chargingSummary(*facts.battery)}};
    }
    for (const RegistryEntry& device : facts.usbDevices) {
        if (device.usbPort && *device.usbPort == port.path) {
            json["devices"].push_back(deviceJson(text(device.properties, RegistryName::UsbVendor),
                                                 text(device.properties, RegistryName::UsbProduct),
                                                 usbSpeed(device.properties)));
        }
    }
    return json;
}

// USB-C first, then by kind and number, as they are counted on the machine.
std::vector<const RegistryEntry*> inOrder(const std::vector<RegistryEntry>& ports) {
    std::vector<const RegistryEntry*> ordered;
    ordered.reserve(ports.size());
    for (const RegistryEntry& port : ports) {
        ordered.push_back(&port);
    }
    const auto place = [](const RegistryEntry* port) {
        const auto type = text(port->properties, RegistryName::PortType).value_or("");
        return std::tuple(type != "USB-C", type, number(port->properties, RegistryName::PortNumber).value_or(0));
    };
    std::stable_sort(ordered.begin(), ordered.end(),
                     [&](const RegistryEntry* a, const RegistryEntry* b) { return place(a) < place(b); });
    return ordered;
}

} // namespace

std::string connectionSnapshot(const ConnectionFacts& facts) {
    Json list = Json::array();
    for (const RegistryEntry* port : inOrder(facts.ports)) {
        list.push_back(portJson(*port, facts));
    }
    return snapshotLine(std::move(list));
}

} // namespace rb
