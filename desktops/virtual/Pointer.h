#pragma once

#include "platform/Observers.h"
#include "platform/Pointer.h"

namespace rb {

// The mouse, moved by the test.
class VirtualPointer final : public Pointer {
public:
    Point location() const override { return location_; }
    unsigned pressedButtons() const override { return pressedButtons_; }
    std::uint32_t modifierFlags() const override { return modifierFlags_; }
    double doubleClickInterval() const override { return 0.5; }

    // The user moves it, in screen coordinates. What lies under the pointer notices at once.
    void moveTo(Point location) {
        warpTo(location);
        input_.notify();
    }
    // A program moves it, which is no input.
    void warpTo(Point location) {
        location_ = location;
        moved_.notify();
    }
    void setPressedButtons(unsigned buttons) {
        pressedButtons_ = buttons;
        input_.notify();
    }
    void holdModifiers(std::uint32_t flags) { modifierFlags_ = flags; }
    Handle onMove(std::function<void()> moved) { return moved_.add(std::move(moved)); }
    Handle onInput(std::function<void()> happened) { return input_.add(std::move(happened)); }

private:
    Point location_{720, 450};
    unsigned pressedButtons_ = 0;
    std::uint32_t modifierFlags_ = 0;
    Observers<> moved_;
    Observers<> input_;
};

} // namespace rb
