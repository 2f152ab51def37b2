#pragma once

#include "platform/Handle.h"

#include <cstdint>
#include <functional>

namespace rb {

// Modifier bits of a hot key as they are stored.
enum HotKeyModifiers : std::uint32_t {
    HotKeyCommand = 0x0100,
    HotKeyShift = 0x0200,
    HotKeyOption = 0x0800,
    HotKeyControl = 0x1000,
};

struct HotKeyId {
    std::uint32_t signature = 0; // four-character code
    std::uint32_t id = 0;
    friend bool operator==(const HotKeyId&, const HotKeyId&) = default;
};

// Keys that work whichever program has the focus. Main thread only.
class HotKeys {
public:
    virtual ~HotKeys() = default;

    // Called once per press of a registered key, never for key repeats. An identifier that could not be read is
    // all zeros.
    virtual Handle installHandler(std::function<void(HotKeyId)> pressed) = 0;
    // Takes the key (macOS virtual key code, or of HotKeyModifiers) until the handle goes. Empty when the key
    // doesn't exist here or someone else holds it.
    virtual Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyId id) = 0;
};

} // namespace rb
