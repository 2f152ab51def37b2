#pragma once

#include "helpers/linux/cable/Sysfs.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

namespace rb {

// A Type-C port as the kernel tells of it.
struct PortFacts {
    std::filesystem::path folder;
    nlohmann::json json; // all but the displays
    bool video = false;  // DisplayPort goes over it
    bool hotPlugDetected = false;
    std::optional<int> lanes = std::nullopt;
};

std::vector<PortFacts> readPorts(const Sysfs& sysfs);

} // namespace rb
