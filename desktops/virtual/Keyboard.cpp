#include "desktops/virtual/Keyboard.h"

#include <array>
#include <utility>

namespace rb {

namespace {

constexpr std::uint16_t returnKeyCode = 36;
constexpr std::uint16_t escapeKeyCode = 53;

} // namespace

std::uint32_t hotKeyModifiers(std::uint32_t modifierFlags) {
    constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 4> pairs{{{CommandModifier, HotKeyCommand},
                                                                            {ShiftModifier, HotKeyShift},
                                                                            {OptionModifier, HotKeyOption},
                                                                            {ControlModifier, HotKeyControl}}};
    std::uint32_t modifiers = 0;
    for (const auto& [flag, modifier] : pairs) {
        if ((modifierFlags & flag) != 0) {
            modifiers |= modifier;
        }
    }
    return modifiers;
}

bool VirtualKeyboard::press(const KeyEvent& event) {
    if (hotKeys_.press(event.keyCode, hotKeyModifiers(event.modifierFlags))) {
        return true;
    }
    if (alerts_.current()) {
        if (event.keyCode == returnKeyCode) {
            alerts_.answerNext(0);
        } else if (event.keyCode == escapeKeyCode) {
            alerts_.closeCurrent();
        }
        return true;
    }
    VirtualWindow* window = windows_.keyWindow();
    return window && window->press(event);
}

} // namespace rb
