#pragma once

#include "helpers/linux/cable/Sysfs.h"

#include <nlohmann/json.hpp>

namespace rb {

// Adds "powerSources" and "charging" to a port, as far as something feeds the machine through it. `count` ports are in
// the machine.
void addPower(const Sysfs& sysfs, const std::filesystem::path& port, const std::filesystem::path& partner,
              std::size_t count, nlohmann::json& json);

} // namespace rb
