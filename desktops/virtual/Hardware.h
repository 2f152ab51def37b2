#pragma once

#include "platform/Hardware.h"
#include "platform/Observers.h"

#include <utility>

namespace rb {

// A machine that wakes and gets devices when the test says so.
class VirtualHardware final : public Hardware {
public:
    Handle onWake(std::function<void()> woke) override { return wakes_.add(std::move(woke)); }
    Handle onUSBChange(std::function<void()> changed) override { return usb_.add(std::move(changed)); }
    bool tellsOfConnections() const override { return tells_; }

    void wake() { wakes_.notify(); }
    void changeUSB() { usb_.notify(); }
    void setTellsOfConnections(bool tells) { tells_ = tells; }

private:
    Observers<> wakes_;
    Observers<> usb_;
    bool tells_ = true;
};

} // namespace rb
