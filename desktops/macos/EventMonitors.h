#pragma once

#include "platform/EventMonitors.h"

namespace rb {

class MacEventMonitors final : public EventMonitors {
public:
    Handle addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) override;
    Handle addLocalMonitor(std::uint64_t mask, std::function<void()> happened) override;
};

} // namespace rb
