#pragma once

#include "helpers/linux/display/PowerBus.h"

#include <memory>
#include <span>

namespace rb {

// One bus, opened, and only the address of monitors' control channels on it.
class I2cBus {
public:
    virtual ~I2cBus() = default;
    // False when nobody took or gave the bytes. Blocks.
    virtual bool write(std::span<const std::uint8_t> bytes) = 0;
    virtual bool read(std::span<std::uint8_t> bytes) = 0;
};

// The machine's buses, and the time that passes between messages.
class I2cBuses {
public:
    virtual ~I2cBuses() = default;
    struct Opened {
        std::unique_ptr<I2cBus> bus = nullptr;
        Exchange failure = Exchange::Done; // why there is none
    };
    virtual Opened open(int bus) = 0;
    virtual void pause(double seconds) = 0;
    // Seconds on a clock that only runs forward.
    virtual double now() = 0;
};

} // namespace rb
