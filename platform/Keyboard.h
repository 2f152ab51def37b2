#pragma once

#include <cstdint>
#include <string>

namespace rb {

// Modifier flags of an event, in the system's bit values. Only these four take part in the product.
enum ModifierFlags : std::uint32_t {
    NoModifiers = 0,
    ShiftModifier = 0x20000,
    ControlModifier = 0x40000,
    OptionModifier = 0x80000,
    CommandModifier = 0x100000,
};

// A key press as a view receives it.
struct KeyEvent {
    std::uint16_t keyCode = 0;       // macOS virtual key code (F13 is 105)
    std::uint32_t modifierFlags = 0; // or of ModifierFlags; further bits are other keys (Caps Lock, function)
    // What the key types without its modifiers but Shift, in UTF-8; may be empty.
    std::string charactersIgnoringModifiers = {};
};

} // namespace rb
