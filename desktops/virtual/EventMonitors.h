#pragma once

#include "platform/Observers.h"
#include "platform/EventMonitors.h"

namespace rb {

// Tells the monitors of the mouse events that the test makes.
class VirtualEventMonitors final : public EventMonitors {
public:
    Handle addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) override {
        return add(global_, mask, std::move(happened));
    }
    Handle addLocalMonitor(std::uint64_t mask, std::function<void()> happened) override {
        return add(local_, mask, std::move(happened));
    }

    // An event that goes to another program, or to this one.
    void happenElsewhere(std::uint64_t event) const { global_.notify(event); }
    void happenHere(std::uint64_t event) const { local_.notify(event); }
    std::size_t count() const { return global_.count() + local_.count(); }

private:
    static Handle add(Observers<std::uint64_t>& monitors, std::uint64_t mask, std::function<void()> happened) {
        return monitors.add([mask, happened = std::move(happened)](std::uint64_t event) {
            if ((mask & event) != 0) {
                happened();
            }
        });
    }

    Observers<std::uint64_t> global_;
    Observers<std::uint64_t> local_;
};

} // namespace rb
