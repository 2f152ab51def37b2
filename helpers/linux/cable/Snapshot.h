#pragma once

#include "helpers/linux/cable/Sysfs.h"

#include <string>

namespace rb {

// Everything the kernel tells of ports, cables, power and what hangs on them, as one line of JSON. What isn't told is
// left out.
std::string connectionSnapshot(const Sysfs& sysfs);

} // namespace rb
