#pragma once

#include "helpers/linux/cable/Sysfs.h"

#include <cstdint>

namespace rb {

// The vendor's name in the system's list of USB numbers, where one is installed.
std::optional<std::string> vendorName(const Sysfs& sysfs, std::uint16_t vendorID);

} // namespace rb
