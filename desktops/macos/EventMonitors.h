#pragma once

#include "platform/EventMonitors.h"

namespace rb {

// NSEvent's monitors. They tell nothing of the whole input at once, so onNextInput stays empty.
class MacEventMonitors final : public EventMonitors {
public:
    Handle addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) override;
    Handle addLocalMonitor(std::uint64_t mask, std::function<void()> happened) override;
    Handle onNextInput(std::function<void()> /*happened*/) override { return {}; }
};

} // namespace rb
