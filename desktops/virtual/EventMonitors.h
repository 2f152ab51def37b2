#pragma once

#include "desktops/virtual/Pointer.h"
#include "platform/EventMonitors.h"
#include "platform/Observers.h"

#include <utility>

namespace rb {

// Tells the monitors of the mouse events that the test makes.
class VirtualEventMonitors final : public EventMonitors {
public:
    explicit VirtualEventMonitors(VirtualPointer& pointer)
        : pointer_(pointer) {}

    Handle addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) override {
        return add(global_, mask, std::move(happened));
    }
    Handle addLocalMonitor(std::uint64_t mask, std::function<void()> happened) override {
        return add(local_, mask, std::move(happened));
    }
    Handle onNextInput(std::function<void()> happened) override {
        if (!tellsInput_) {
            return {};
        }
        return pointer_.onInput([happened = std::move(happened), told = std::make_shared<bool>(false)] {
            if (!std::exchange(*told, true)) {
                happened();
            }
        });
    }
    // With false, a system that doesn't tell of input elsewhere.
    void setTellsInput(bool tells) { tellsInput_ = tells; }

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

    VirtualPointer& pointer_;
    bool tellsInput_ = true;
    Observers<std::uint64_t> global_;
    Observers<std::uint64_t> local_;
};

} // namespace rb
