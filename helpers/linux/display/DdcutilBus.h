#pragma once

#include "helpers/linux/display/PowerBus.h"

namespace rb {

// The library speaks on standard output, already while it is loaded; answers must stand there alone. Call it first.
void keepLibraryOffStandardOutput();

// The real buses, through ddcutil's library.
class DdcutilBus final : public PowerBus {
public:
    DdcutilBus();
    PowerReading readPowerMode(int bus) override;
    Exchange writePowerMode(int bus, std::uint8_t mode) override;
    void pause(double seconds) override;
};

} // namespace rb
