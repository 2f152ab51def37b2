#pragma once

// The keys of the user defaults, each spelled once.
namespace rb::DefaultsKey {

// The lock hot key; HotKeyCode alone decides whether one is saved.
inline constexpr const char* HotKeyCode = "HotKeyCode";           // integer, virtual key code
inline constexpr const char* HotKeyModifiers = "HotKeyModifiers"; // integer, or of HotKeyModifiers
inline constexpr const char* HotKeyDisplay = "HotKeyDisplay";     // text shown to the user

} // namespace rb::DefaultsKey
