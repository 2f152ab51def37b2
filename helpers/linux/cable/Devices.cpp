#include "helpers/linux/cable/Devices.h"

#include "helpers/shared/ConnectionJson.h"

#include <algorithm>
#include <charconv>

namespace rb {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr int deepestHub = 7; // by the standard
constexpr std::size_t mostDevices = 128;
constexpr long long superSpeed = 5000; // Mbps
constexpr double mega = 1e6;

// "1-2" or "1-2.4", not an interface "1-2:1.0".
bool isDeviceName(const std::string& name) {
    return !name.empty() && name[0] >= '0' && name[0] <= '9' && name.find('-') != std::string::npos &&
           name.find_first_not_of("0123456789-.") == std::string::npos;
}

void readUsb(const fs::path& device, int depth, AttachedDevices& devices) {
    const auto speed = Sysfs::number(device / "speed");
    if (speed) {
        (*speed >= superSpeed ? devices.usb3 : devices.usb2) = true;
    }
    const auto speedWords = speed ? std::optional(speedText(static_cast<double>(*speed) * mega)) : std::nullopt;
    Json json = deviceJson(Sysfs::text(device / "manufacturer"), Sysfs::text(device / "product"), speedWords);
    if (devices.list.size() < mostDevices) {
        devices.list.push_back(std::move(json));
    }
    if (depth == 0) {
        return;
    }
    for (const std::string& name : Sysfs::names(device)) {
        if (isDeviceName(name)) {
            readUsb(device / name, depth - 1, devices);
        }
    }
}

// "20.0 Gb/s" as "20 Gbps".
std::optional<std::string> thunderboltSpeed(const fs::path& device) {
    auto text = Sysfs::text(device / "rx_speed");
    const std::size_t unit = text ? text->find(" Gb/s") : std::string::npos;
    if (unit == std::string::npos) {
        return std::nullopt;
    }
    std::string number = text->substr(0, unit);
    if (number.ends_with(".0")) {
        number.resize(number.size() - 2);
    }
    const auto lanes = Sysfs::number(device / "rx_lanes");
    return number + " Gbps" + (lanes && *lanes > 1 ? " × " + std::to_string(*lanes) : "");
}

// A router's socket "usb4_port3" says which Type-C port it is; the device on it has the number 3 in its route.
void readThunderbolt(const Sysfs& sysfs, const fs::path& port, AttachedDevices& devices) {
    const auto typec = Sysfs::target(port);
    const fs::path bus = sysfs.at("/sys/bus/thunderbolt/devices");
    for (const std::string& host : Sysfs::names(bus)) {
        if (host.find('-') == std::string::npos || !host.ends_with("-0")) {
            continue; // only the machine's own routers have its sockets
        }
        for (const std::string& socket : Sysfs::names(bus / host)) {
            constexpr const char* prefix = "usb4_port";
            if (!socket.starts_with(prefix) || !typec || Sysfs::target(bus / host / socket / "connector") != typec) {
                continue;
            }
            const fs::path device = bus / (host.substr(0, host.size() - 1) + socket.substr(9));
            std::error_code error;
            if (!fs::exists(device, error)) {
                continue;
            }
            devices.thunderbolt = true;
            devices.list.push_back(deviceJson(Sysfs::text(device / "vendor_name"), Sysfs::text(device / "device_name"),
                                              thunderboltSpeed(device)));
        }
    }
}

} // namespace

AttachedDevices readDevices(const Sysfs& sysfs, const fs::path& port) {
    AttachedDevices devices;
    readThunderbolt(sysfs, port, devices);
    for (const std::string& name : Sysfs::names(port)) {
        // Links to the sockets of the USB buses that lead to this port: "usb1-port2".
        if (!name.starts_with("usb") || name.find("-port") == std::string::npos) {
            continue;
        }
        std::error_code error;
        if (const fs::path device = port / name / "device"; fs::exists(device, error)) {
            readUsb(device, deepestHub, devices);
        }
    }
    return devices;
}

} // namespace rb
