#pragma once

#include "helpers/linux/display/PowerBus.h"

namespace rb {

// The real buses, through ddcutil's library.
class DdcutilBus final : public PowerBus {
public:
    DdcutilBus();
    Reading readPowerMode(int bus) override;
    Exchange writePowerMode(int bus, std::uint8_t mode) override;
    void pause(double seconds) override;
};

} // namespace rb
