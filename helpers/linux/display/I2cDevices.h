#pragma once

#include "helpers/linux/display/I2cBus.h"

namespace rb {

// The kernel's /dev/i2c-*. A bus is locked while it is open, so that no two programs that heed the lock mix their
// messages.
class I2cDevices final : public I2cBuses {
public:
    Opened open(int bus) override;
    void pause(double seconds) override;
    double now() override;
};

} // namespace rb
