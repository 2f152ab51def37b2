#pragma once

#include "helpers/linux/cable/Sysfs.h"

#include <nlohmann/json.hpp>

namespace rb {

// What hangs on a Type-C port over USB and Thunderbolt.
struct AttachedDevices {
    bool usb2 = false;
    bool usb3 = false;
    bool thunderbolt = false;
    nlohmann::json list = nlohmann::json::array(); // name and speed of each
};

AttachedDevices readDevices(const Sysfs& sysfs, const std::filesystem::path& port);

} // namespace rb
