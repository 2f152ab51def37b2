#pragma once

#include "platform/Handle.h"

#include <functional>

namespace rb {

// News about the machine. Main thread only; callbacks come on it.
class Hardware {
public:
    virtual ~Hardware() = default;
    // The machine woke from sleep. Where the system can't tell, the handle is empty.
    virtual Handle onWake(std::function<void()> woke) = 0;
    // A USB device came or went, also as one of many in a burst. Where the system can't tell, the handle is empty.
    virtual Handle onUSBChange(std::function<void()> changed) = 0;
    // Whether this system can tell of ports and cables at all.
    virtual bool tellsOfConnections() const = 0;
};

} // namespace rb
