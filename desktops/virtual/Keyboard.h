#pragma once

#include "desktops/virtual/Alerts.h"
#include "desktops/virtual/HotKeys.h"
#include "desktops/virtual/Windows.h"
#include "platform/Keyboard.h"

namespace rb {

// The user's keyboard. A press goes to the program that holds the combination as a hot key, else to the alert that
// is up, else to the key window.
class VirtualKeyboard {
public:
    VirtualKeyboard(VirtualHotKeys& hotKeys, VirtualAlerts& alerts, VirtualWindows& windows)
        : hotKeys_(hotKeys)
        , alerts_(alerts)
        , windows_(windows) {}

    // False when nobody took it (other programs may have).
    bool press(const KeyEvent& event);

private:
    VirtualHotKeys& hotKeys_;
    VirtualAlerts& alerts_;
    VirtualWindows& windows_;
};

// Modifier flags of an event as a hot key stores them.
std::uint32_t hotKeyModifiers(std::uint32_t modifierFlags);

} // namespace rb
