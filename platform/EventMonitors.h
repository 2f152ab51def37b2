#pragma once

#include "platform/Handle.h"

#include <cstdint>
#include <functional>

namespace rb {

// Kinds of events, in the system's mask values.
enum EventMask : std::uint64_t {
    LeftMouseDownMask = 1U << 1U,
    RightMouseDownMask = 1U << 3U,
    MouseMovedMask = 1U << 5U,
};

// Watching the mouse without taking its events. Global monitors see what goes to other programs, local ones what
// goes to this one; both pass everything on. Main thread only.
class EventMonitors {
public:
    virtual ~EventMonitors() = default;
    virtual Handle addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) = 0;
    virtual Handle addLocalMonitor(std::uint64_t mask, std::function<void()> happened) = 0;
    // Once, when the user next moves the pointer or presses or releases a button, wherever. Programs that move the
    // pointer need not be noticed. Empty on a system that doesn't tell, where one has to look again and again.
    virtual Handle onNextInput(std::function<void()> happened) = 0;
};

} // namespace rb
