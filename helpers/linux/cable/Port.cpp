#include "helpers/linux/cable/Port.h"

#include "helpers/linux/cable/Devices.h"
#include "helpers/linux/cable/Power.h"
#include "helpers/linux/cable/UsbIds.h"
#include "helpers/shared/ConnectionJson.h"

#include <algorithm>

namespace rb {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr long long displayPortMode = 0xFF01;
constexpr long long thunderboltMode = 0x8087;

long long hexadecimal(const fs::path& file) {
    // Alternate modes are named by four hexadecimal digits without a prefix.
    const auto text = Sysfs::text(file);
    return text ? std::strtoll(text->c_str(), nullptr, 16) : 0;
}

void addVideo(PortFacts& port, const fs::path& mode) {
    port.video = true;
    port.hotPlugDetected = Sysfs::number(mode / "displayport/hpd") == 1;
    const auto pins = Sysfs::selected(mode / "displayport/pin_assignment");
    if (pins == "C" || pins == "E" || pins == "A") {
        port.lanes = 4;
    } else if (pins == "D" || pins == "F" || pins == "B") {
        port.lanes = 2;
    }
}

// The alternate modes of what is plugged in, as far as they are on.
std::vector<std::string> readModes(PortFacts& port, const fs::path& partner) {
    std::vector<std::string> transports;
    const std::string own = partner.filename().string() + ".";
    for (const std::string& name : Sysfs::names(partner)) {
        const fs::path mode = partner / name;
        if (!name.starts_with(own) || Sysfs::text(mode / "active") != "yes") {
            continue;
        }
        if (hexadecimal(mode / "svid") == displayPortMode) {
            addVideo(port, mode);
            transports.emplace_back("DisplayPort");
        } else if (hexadecimal(mode / "svid") == thunderboltMode) {
            transports.emplace_back("CIO");
        }
    }
    return transports;
}

Json readCable(const Sysfs& sysfs, const fs::path& cable) {
    const auto header = Sysfs::number(cable / "identity/id_header");
    const auto object = Sysfs::number(cable / "identity/product_type_vdo1");
    Json json =
        cableJson(static_cast<std::uint32_t>(header.value_or(0)), static_cast<std::uint32_t>(object.value_or(0)));
    if (json.is_null()) {
        return json; // the cable is there, its marker wasn't read
    }
    if (const auto vendor = vendorName(sysfs, json.at("vendorID").get<std::uint16_t>())) {
        json["vendorName"] = *vendor;
    }
    return json;
}

PortFacts readPort(const Sysfs& sysfs, const std::string& name, std::size_t count) {
    PortFacts port{.folder = sysfs.at("/sys/class/typec") / name};
    const fs::path partner = sysfs.at("/sys/class/typec") / (name + "-partner");
    const fs::path cable = sysfs.at("/sys/class/typec") / (name + "-cable");
    std::error_code error;
    const bool plugged = fs::exists(partner, error);
    const std::string number = name.substr(std::string("port").size());
    port.json = {{"name", "USB-C 端口 " + std::to_string(std::strtol(number.c_str(), nullptr, 10) + 1)},
                 {"connectionActive", plugged}};
    if (!plugged) {
        return port;
    }
    std::vector<std::string> transports{"CC"};
    const AttachedDevices devices = readDevices(sysfs, port.folder);
    if (devices.usb2) {
        transports.emplace_back("USB2");
    }
    if (devices.usb3) {
        transports.emplace_back("USB3");
    }
    for (std::string& transport : readModes(port, partner)) {
        transports.push_back(std::move(transport));
    }
    if (devices.thunderbolt && std::find(transports.begin(), transports.end(), "CIO") == transports.end()) {
        transports.emplace_back("CIO");
    }
    port.json["transports"] = {{"active", transports}};
    if (!devices.list.empty()) {
        port.json["devices"] = devices.list;
    }
    if (Json marker = readCable(sysfs, cable); !marker.is_null()) {
        port.json["cable"] = std::move(marker);
    }
    addPower(sysfs, port.folder, partner, count, port.json);
    return port;
}

} // namespace

std::vector<PortFacts> readPorts(const Sysfs& sysfs) {
    std::vector<std::string> names;
    for (const std::string& name : Sysfs::names(sysfs.at("/sys/class/typec"))) {
        const std::string number = name.starts_with("port") ? name.substr(4) : "";
        constexpr std::size_t mostDigits = 5;
        if (!number.empty() && number.size() <= mostDigits &&
            number.find_first_not_of("0123456789") == std::string::npos) {
            names.push_back(name);
        }
    }
    std::vector<PortFacts> ports;
    ports.reserve(names.size());
    for (const std::string& name : names) {
        ports.push_back(readPort(sysfs, name, names.size()));
    }
    return ports;
}

} // namespace rb
