#include "helpers/linux/cable/UsbIds.h"

#include <array>
#include <cstdio>
#include <fstream>

namespace rb {

std::optional<std::string> vendorName(const Sysfs& sysfs, std::uint16_t vendorID) {
    constexpr std::uint16_t noVendor = 0xFFFF;
    if (vendorID == 0 || vendorID == noVendor) {
        return std::nullopt;
    }
    std::array<char, 7> prefix{};
    std::snprintf(prefix.data(), prefix.size(), "%04x  ", vendorID);
    for (const char* file : {"/usr/share/misc/usb.ids", "/usr/share/hwdata/usb.ids", "/var/lib/usbutils/usb.ids"}) {
        std::ifstream stream(sysfs.at(file));
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with(prefix.data())) {
                return line.substr(6);
            }
            if (line.starts_with("C 00")) {
                break; // device classes, behind the vendors
            }
        }
    }
    return std::nullopt;
}

} // namespace rb
