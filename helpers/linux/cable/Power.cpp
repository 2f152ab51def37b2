#include "helpers/linux/cable/Power.h"

#include <algorithm>

namespace rb {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr double milli = 1e-3;
constexpr double micro = 1e-6;

// The most that the partner's offers add up to, in watts.
std::optional<double> offeredWatts(const fs::path& capabilities) {
    std::optional<double> most;
    for (const std::string& name : Sysfs::names(capabilities)) {
        const fs::path offer = capabilities / name;
        std::optional<double> watts;
        const auto milliamps = Sysfs::number(offer / "maximum_current");
        auto millivolts = Sysfs::number(offer / "voltage");
        if (!millivolts) {
            millivolts = Sysfs::number(offer / "maximum_voltage");
        }
        // Programmable supplies repeat what the fixed ones offer, at voltages of their own.
        if (name.find("fixed_supply") != std::string::npos || name.find("variable_supply") != std::string::npos) {
            if (milliamps && millivolts) {
                watts = static_cast<double>(*milliamps) * milli * static_cast<double>(*millivolts) * milli;
            }
        } else if (const auto power = Sysfs::number(offer / "maximum_power");
                   power && name.find("battery") != std::string::npos) {
            watts = static_cast<double>(*power) * milli;
        }
        if (watts && (!most || *watts > *most)) {
            most = watts;
        }
    }
    return most;
}

// The power supply that stands for the port: UCSI counts its ports from 1; other controllers share a device with it.
std::optional<fs::path> supplyOf(const Sysfs& sysfs, const fs::path& port, std::size_t count) {
    const fs::path folder = sysfs.at("/sys/class/power_supply");
    const std::string number = port.filename().string().substr(4);
    const long index = std::strtol(number.c_str(), nullptr, 10);
    const auto device = Sysfs::target(port / "device");
    std::vector<fs::path> candidates;
    for (const std::string& name : Sysfs::names(folder)) {
        if (name.starts_with("ucsi-source-psy-")) {
            const std::size_t digits = name.find_last_not_of("0123456789") + 1;
            if (digits < name.size() && std::strtol(name.c_str() + digits, nullptr, 10) == index + 1) {
                candidates.push_back(folder / name);
            }
        } else if (name.starts_with("tcpm-source-psy-")) {
            const auto itsDevice = Sysfs::target(folder / name / "device");
            if ((device && itsDevice == device) || (!itsDevice && count == 1)) {
                candidates.push_back(folder / name);
            }
        }
    }
    return candidates.size() == 1 ? std::optional(candidates.front()) : std::nullopt;
}

std::optional<Json> negotiatedPower(const fs::path& supply) {
    if (Sysfs::number(supply / "online").value_or(0) == 0) {
        return std::nullopt;
    }
    const auto volts = Sysfs::number(supply / "voltage_now");
    auto amps = Sysfs::number(supply / "current_max"); // what was agreed on, not what flows
    if (!amps || *amps == 0) {
        amps = Sysfs::number(supply / "current_now");
    }
    if (!volts || !amps || *volts <= 0 || *amps <= 0) {
        return std::nullopt;
    }
    const double v = static_cast<double>(*volts) * micro;
    const double a = static_cast<double>(*amps) * micro;
    return Json{{"powerW", v * a}, {"voltageV", v}, {"currentA", a}};
}

std::optional<std::string> chargingSummary(const Sysfs& sysfs) {
    const fs::path folder = sysfs.at("/sys/class/power_supply");
    for (const std::string& name : Sysfs::names(folder)) {
        if (Sysfs::text(folder / name / "type") != "Battery" || Sysfs::text(folder / name / "scope") == "Device") {
            continue; // mice and keyboards have batteries too
        }
        const auto status = Sysfs::text(folder / name / "status");
        if (status == "Not charging") {
            return "Plugged in, charging on hold";
        }
        if (status == "Charging") {
            return "Charging";
        }
        if (status == "Full") {
            return "Fully charged";
        }
    }
    return std::nullopt;
}

} // namespace

void addPower(const Sysfs& sysfs, const fs::path& port, const fs::path& partner, std::size_t count, Json& json) {
    if (Sysfs::selected(port / "power_role") != "sink") {
        return;
    }
    const bool powerDelivery = Sysfs::selected(port / "power_operation_mode") == "usb_power_delivery";
    Json source{{"name", powerDelivery ? "USB-PD" : "USB Type-C"}};
    if (const auto supply = supplyOf(sysfs, port, count)) {
        if (const auto negotiated = negotiatedPower(*supply)) {
            source["negotiated"] = *negotiated;
        }
    }
    std::optional<double> most = offeredWatts(partner / "usb_power_delivery/source-capabilities");
    const auto mode = Sysfs::selected(port / "power_operation_mode");
    if (!most && mode == "3.0A") {
        most = 15;
    } else if (!most && mode == "1.5A") {
        most = 7.5;
    }
    if (most) {
        source["maxPowerW"] = *most;
    }
    json["powerSources"] = Json::array({source});
    if (const auto summary = chargingSummary(sysfs)) {
        json["charging"] = {{"summary", *summary}};
    }
}

} // namespace rb
