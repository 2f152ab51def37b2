#pragma once

#include "helpers/macos/CableHelper/Registry.h"

#include <string>

namespace rb {

// The ports with cable, power, displays and devices as one line of JSON. What isn't reported is left out.
std::string connectionSnapshot(const ConnectionFacts& facts);

} // namespace rb
