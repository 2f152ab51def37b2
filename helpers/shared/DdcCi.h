#pragma once

#include "helpers/shared/PowerControl.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

// The messages of DDC/CI, by which a host asks a monitor for its controls and sets them over I2C.
namespace rb {

inline constexpr std::uint8_t ddcDevice = 0x37; // the monitor's 7-bit address
inline constexpr std::uint8_t ddcHost = 0x51;   // stands for the host; the first byte of what it writes
inline constexpr std::size_t featureReplySize = 11;

// "Get VCP Feature" and "Set VCP Feature", from the host's address to the checksum.
std::vector<std::uint8_t> featureRequest(std::uint8_t feature);
std::vector<std::uint8_t> featureSetting(std::uint8_t feature, std::uint16_t value);

struct FeatureReply {
    Exchange exchange = Exchange::NoReply;
    std::uint16_t value = 0;
};
// What was read after a request. A null message, and a line that stays high or low, are no reply.
FeatureReply parseFeatureReply(std::span<const std::uint8_t> bytes, std::uint8_t feature);

// The I2C line to one monitor. Nothing means that it took or gave the bytes; otherwise what went wrong.
class I2cLine {
public:
    virtual ~I2cLine() = default;
    virtual std::optional<Exchange> write(std::span<const std::uint8_t> bytes) = 0;
    virtual std::optional<Exchange> read(std::span<std::uint8_t> bytes) = 0;
    virtual void pause(double seconds) = 0;
    virtual std::string explainAccess(Exchange exchange) const = 0;
};

// A monitor's power mode over such a line, with the standard's waits and a few repetitions. Only the values for on and
// standby are ever written.
class DdcPower final : public PowerControl {
public:
    explicit DdcPower(I2cLine& line)
        : line_(line) {}
    PowerReading readPowerMode() override;
    Exchange writePowerMode(std::uint8_t mode) override;
    void pause(double seconds) override { line_.pause(seconds); }
    std::string explainAccess(Exchange exchange) const override { return line_.explainAccess(exchange); }

private:
    FeatureReply ask();
    I2cLine& line_;
};

} // namespace rb
