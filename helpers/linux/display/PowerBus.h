#pragma once

#include "helpers/shared/PowerControl.h"

namespace rb {

// The power mode of monitors, one bus at a time; nothing else is ever read or written.
class PowerBus {
public:
    virtual ~PowerBus() = default;
    virtual PowerReading readPowerMode(int bus) = 0;
    // Without reading back.
    virtual Exchange writePowerMode(int bus, std::uint8_t mode) = 0;
    // Lets the monitor settle.
    virtual void pause(double seconds) = 0;
};

} // namespace rb
