#pragma once

#include "helpers/shared/DdcCi.h"

namespace rb {

// A bus of the kernel, /dev/i2c-N, and on it only the address of monitors' control channels. It is locked while this
// object lives, so that no two programs that heed the lock mix their messages.
class I2cDevice final : public I2cLine {
public:
    explicit I2cDevice(int bus);
    ~I2cDevice() override;
    I2cDevice(const I2cDevice&) = delete;
    I2cDevice& operator=(const I2cDevice&) = delete;

    std::optional<Exchange> write(std::span<const std::uint8_t> bytes) override;
    std::optional<Exchange> read(std::span<std::uint8_t> bytes) override;
    void pause(double seconds) override;
    std::string explainAccess(Exchange exchange) const override;

private:
    enum class Trouble {
        None,
        NoModule, // the kernel offers no I2C devices at all
        NoBus,    // this one is gone, as with a monitor that hung on a dock
        NoAccess,
        InUse, // another program talks on it and doesn't stop
    };
    Trouble open();
    std::optional<Exchange> transfer(std::span<std::uint8_t> bytes, std::uint16_t flags) const;

    std::string device_;
    int file_ = -1;
    double end_; // then patience is over, for whoever started us has none left
    Trouble trouble_;
};

} // namespace rb
