#pragma once

#include "helpers/linux/display/I2cBus.h"

namespace rb {

// The power mode over DDC/CI: the messages with their checksums, the pauses that monitors need between them, and
// patience with monitors that answer late, empty or garbled.
class DdcBus final : public PowerBus {
public:
    explicit DdcBus(I2cBuses& buses)
        : buses_(buses) {}
    Reading readPowerMode(int bus) override;
    Exchange writePowerMode(int bus, std::uint8_t mode) override;
    void pause(double seconds) override { buses_.pause(seconds); }

private:
    I2cBuses& buses_;
};

} // namespace rb
