#pragma once

#include "platform/Hardware.h"

namespace rb {

// Waking from the workspace, USB devices from the I/O registry.
class MacHardware final : public Hardware {
public:
    Handle onWake(std::function<void()> woke) override;
    Handle onUSBChange(std::function<void()> changed) override;
    bool tellsOfConnections() const override;
};

} // namespace rb
