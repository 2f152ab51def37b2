#pragma once

#include "platform/Observers.h"
#include "platform/Pointer.h"

namespace rb {

// The mouse, moved by the test.
class VirtualPointer final : public Pointer {
public:
    Point location() const override { return location_; }
    unsigned pressedButtons() const override { return pressedButtons_; }

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
    Handle onMove(std::function<void()> moved) { return moved_.add(std::move(moved)); }
    Handle onInput(std::function<void()> happened) { return input_.add(std::move(happened)); }

private:
    Point location_{720, 450};
    unsigned pressedButtons_ = 0;
    Observers<> moved_;
    Observers<> input_;
};

} // namespace rb
