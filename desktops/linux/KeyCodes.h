#pragma once

#include <cstdint>
#include <optional>

// macOS virtual key codes and the keys of X11. Two kinds of keys: those with a name (F13, Return, arrows, keypad) go
// by their keysym, so that a key which the user mapped to F13 is F13; those that type characters go by their place on
// the keyboard, as on macOS, so that a code means the same key under every layout. Pure functions.
namespace rb {

// Codes from here on are keys without a counterpart on Apple keyboards: this plus the X key code. They make every
// key of a keyboard usable as a hot key.
inline constexpr std::uint32_t firstForeignKeyCode = 0x100;

// The macOS virtual key code of a key press: its keysym (as X11 or Qt's nativeVirtualKey reports it) and its X key
// code (8 to 255; Qt's nativeScanCode). Never fails; a key unknown to macOS gets a foreign code.
std::uint16_t macKeyCode(std::uint32_t keysym, std::uint32_t xKeyCode);

// The keysym under which a named key is looked for in the keyboard's map, or nothing for keys that go by place.
std::optional<std::uint32_t> keysymOfMacKeyCode(std::uint32_t keyCode);
// The X key code of the place that the key has on a PC keyboard, or nothing when it has none.
std::optional<std::uint8_t> placeOfMacKeyCode(std::uint32_t keyCode);

// An X event's state as ModifierFlags: Mod1 (Alt) is option, Mod4 (Super) is command; locks and others drop out.
std::uint32_t modifierFlagsOfXState(std::uint32_t state);
// HotKeyModifiers as the modifier mask of a key grab.
std::uint16_t xModifiersOfHotKey(std::uint32_t hotKeyModifiers);

} // namespace rb
