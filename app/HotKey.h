#pragma once

#include <cstdint>
#include <string>

namespace rb {

// A key with its modifiers, as it is registered, stored and shown. F13 unless the user chose another: no ordinary
// typing produces it.
struct HotKey {
    std::uint32_t code = 105;    // macOS virtual key code
    std::uint32_t modifiers = 0; // or of HotKeyModifiers
    std::string display = "F13";
    friend bool operator==(const HotKey&, const HotKey&) = default;
};

// Shown for a key that was saved without a text of its own.
inline constexpr const char* unnamedHotKeyDisplay = "自定义快捷键";

} // namespace rb
