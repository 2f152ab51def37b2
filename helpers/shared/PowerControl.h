#pragma once

#include <cstdint>
#include <string>

namespace rb {

// How an exchange with a monitor's control channel went.
enum class Exchange {
    Done,
    NoBus,       // there is no such device
    NoAccess,    // it may not be opened
    NoReply,     // nothing, or an empty answer
    Garbled,     // wrong checksums, again and again
    Unsupported, // the monitor doesn't know the power feature
};

struct PowerReading {
    Exchange exchange = Exchange::NoReply;
    std::uint8_t mode = 0;
};

// The power mode of one monitor; nothing else is ever read or written.
class PowerControl {
public:
    virtual ~PowerControl() = default;
    virtual PowerReading readPowerMode() = 0;
    // Without reading back.
    virtual Exchange writePowerMode(std::uint8_t mode) = 0;
    // Lets the monitor settle.
    virtual void pause(double seconds) = 0;
    // What the user may do when there is no device or it may not be opened.
    virtual std::string explainAccess(Exchange exchange) const = 0;
};

// In the standard's numbers.
inline constexpr std::uint8_t powerModeFeature = 0xD6;
inline constexpr std::uint8_t powerOn = 1;
inline constexpr std::uint8_t powerStandby = 4; // off by power management, from which a command wakes it

// The commands about one display, as the JSON that answers them.
std::string probe(PowerControl& display);
std::string sleepDisplay(PowerControl& display);
std::string wakeDisplay(PowerControl& display);

} // namespace rb
