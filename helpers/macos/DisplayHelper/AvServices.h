#pragma once

#include "helpers/macos/DisplayHelper/Channels.h"
#include "helpers/macos/shared/IoObject.h"
#include "helpers/shared/DdcCi.h"

#import <CoreFoundation/CoreFoundation.h>

namespace rb {

// The system's functions for the I2C line of a display. They are not in its headers, so they are looked up by name when
// they are needed, and any of them may be missing. Their results follow the Create rule.
struct AvFunctions {
    using CreateWithService = CFTypeRef (*)(CFAllocatorRef, io_service_t);
    using CopyEdid = IOReturn (*)(CFTypeRef service, CFDataRef* edid);
    using TransferI2c = IOReturn (*)(CFTypeRef service, std::uint32_t device, std::uint32_t offset, void* bytes,
                                     std::uint32_t size);
    CreateWithService createWithService = nullptr;
    CopyEdid copyEdid = nullptr;
    TransferI2c readI2c = nullptr;
    TransferI2c writeI2c = nullptr;

    static AvFunctions lookUp();
    bool complete() const {
        return createWithService != nullptr && copyEdid != nullptr && readI2c != nullptr && writeI2c != nullptr;
    }
};

// A display's service, opened.
class AvService final : public I2cLine {
public:
    AvService(const AvFunctions& functions, const IoObject& entry);
    ~AvService() override;
    AvService(const AvService&) = delete;
    AvService& operator=(const AvService&) = delete;

    std::optional<Edid> edid() const;
    std::optional<Exchange> write(std::span<const std::uint8_t> bytes) override;
    std::optional<Exchange> read(std::span<std::uint8_t> bytes) override;
    void pause(double seconds) override;
    std::string explainAccess(Exchange exchange) const override;

private:
    AvFunctions functions_;
    CFTypeRef service_;
};

struct AvEntry {
    IoObject entry;
    DisplayChannel channel;
};
// The services of external displays; a laptop's own panel is never touched, nor is one that doesn't say where it is.
std::vector<AvEntry> externalServices(const AvFunctions& functions);

} // namespace rb
