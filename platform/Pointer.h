#pragma once

#include "motion/Geometry.h"

#include <cstdint>

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
    // The modifier keys held now; or of ModifierFlags.
    virtual std::uint32_t modifierFlags() const = 0;
    // Seconds within which a second click makes a double click, as the user set it.
    virtual double doubleClickInterval() const = 0;
};

} // namespace rb
