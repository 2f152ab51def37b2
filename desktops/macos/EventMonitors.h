#pragma once

#include "platform/EventMonitors.h"

namespace rb {

// NSEvent's monitors.
class MacEventMonitors final : public EventMonitors {
public:
    Handle addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) override;
    Handle addLocalMonitor(std::uint64_t mask, std::function<void()> happened) override;
    // Nothing: here one looks again and again.
    Handle onNextInput(std::function<void()> /*happened*/) override { return {}; }
};

} // namespace rb
