#include "helpers/shared/ConnectionJson.h"

#include "helpers/shared/CableIdentity.h"

#include <array>
#include <cstdio>

namespace rb {

using Json = nlohmann::json;

Json cableJson(std::uint32_t idHeader, std::uint32_t cableObject) {
    if (idHeader == 0) {
        return nullptr;
    }
    const CableIdentity identity = readCableIdentity(idHeader, cableObject);
    Json json{{"vendorID", identity.vendorID}};
    if (cableObject == 0) {
        return json;
    }
    if (identity.speed) {
        json["speed"] = *identity.speed;
    }
    if (identity.maxVolts) {
        json["maxVolts"] = *identity.maxVolts;
    }
    if (identity.maxAmps) {
        json["currentRating"] = std::to_string(*identity.maxAmps) + " A";
    }
    if (identity.maxWatts) {
        json["maxWatts"] = *identity.maxWatts;
    }
    return json;
}

Json deviceJson(const std::optional<std::string>& maker, const std::optional<std::string>& product,
                const std::optional<std::string>& speed) {
    Json json = Json::object();
    if (product) {
        json["name"] = maker && !product->starts_with(*maker) ? *maker + " " + *product : *product;
    } else if (maker) {
        json["name"] = *maker;
    }
    if (speed) {
        json["speed"] = *speed;
    }
    return json;
}

std::string speedText(double bitsPerSecond) {
    constexpr double mega = 1e6;
    constexpr double giga = 1e9;
    const bool fast = bitsPerSecond >= giga;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g %s", bitsPerSecond / (fast ? giga : mega), fast ? "Gbps" : "Mbps");
    return text.data();
}

std::string snapshotLine(Json ports) {
    return Json{{"ports", std::move(ports)}}.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace rb
