#pragma once

#include "helpers/macos/CableHelper/Registry.h"

namespace rb {

// Reads the ports with everything below them, the USB devices and the battery's state. Nothing is asked of hardware, so
// it takes a fraction of a second.
ConnectionFacts readConnectionFacts();

} // namespace rb
