#pragma once

#include <cstdint>

namespace rb {

// How an exchange with a monitor's control channel went.
enum class Exchange {
    Done,
    NoModule,    // the kernel offers no I2C devices at all
    NoBus,       // this bus is gone, as with a monitor that hung on a dock
    NoAccess,    // it may not be opened
    Busy,        // another program talks on it and doesn't stop
    NoReply,     // nothing, or an empty answer
    Garbled,     // wrong checksums, again and again
    Unsupported, // the monitor doesn't know the power feature
};

// The power mode of monitors, one bus at a time; nothing else is ever read or written.
class PowerBus {
public:
    virtual ~PowerBus() = default;
    struct Reading {
        Exchange exchange = Exchange::NoReply;
        std::uint8_t mode = 0;
    };
    virtual Reading readPowerMode(int bus) = 0;
    // Without reading back.
    virtual Exchange writePowerMode(int bus, std::uint8_t mode) = 0;
    // Lets the monitor settle.
    virtual void pause(double seconds) = 0;
};

// In the standard's numbers.
inline constexpr std::uint8_t powerOn = 1;
inline constexpr std::uint8_t powerStandby = 4; // off by power management, from which a command wakes it

} // namespace rb
