#pragma once

#include "motion/Geometry.h"

namespace rb {

// The mouse, wherever it is on the screen.
class Pointer {
public:
    virtual ~Pointer() = default;
    // Screen coordinates. On the topmost row of pixels of a screen y is the screen's upper edge, see
    // Rect::containsPointer.
    virtual Point location() const = 0;
    // Bit 0 is the left button, bit 1 the right one.
    virtual unsigned pressedButtons() const = 0;
};

} // namespace rb
