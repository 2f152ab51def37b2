#include "desktops/linux/KeyCodes.h"

#include "platform/HotKeys.h"
#include "platform/Keyboard.h"

#include <array>
#include <xcb/xproto.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace rb {

namespace {

struct NamedKey {
    std::uint8_t code;    // macOS
    std::uint32_t keysym; // the first row of a code is the one to look for, further ones are its other faces
};

// The keypad's second face (Home, arrows) shows while Num Lock is off. PC's Insert stands where Apple has Help, PC's
// Num Lock where Apple has Clear.
constexpr std::array namedKeys = {
    NamedKey{36, XKB_KEY_Return},
    NamedKey{48, XKB_KEY_Tab},
    NamedKey{48, XKB_KEY_ISO_Left_Tab},
    NamedKey{49, XKB_KEY_space},
    NamedKey{51, XKB_KEY_BackSpace},
    NamedKey{53, XKB_KEY_Escape},
    NamedKey{54, XKB_KEY_Super_R},
    NamedKey{55, XKB_KEY_Super_L},
    NamedKey{54, XKB_KEY_Meta_R},
    NamedKey{55, XKB_KEY_Meta_L},
    NamedKey{56, XKB_KEY_Shift_L},
    NamedKey{57, XKB_KEY_Caps_Lock},
    NamedKey{58, XKB_KEY_Alt_L},
    NamedKey{59, XKB_KEY_Control_L},
    NamedKey{60, XKB_KEY_Shift_R},
    NamedKey{61, XKB_KEY_Alt_R},
    NamedKey{61, XKB_KEY_ISO_Level3_Shift},
    NamedKey{62, XKB_KEY_Control_R},
    NamedKey{122, XKB_KEY_F1},
    NamedKey{120, XKB_KEY_F2},
    NamedKey{99, XKB_KEY_F3},
    NamedKey{118, XKB_KEY_F4},
    NamedKey{96, XKB_KEY_F5},
    NamedKey{97, XKB_KEY_F6},
    NamedKey{98, XKB_KEY_F7},
    NamedKey{100, XKB_KEY_F8},
    NamedKey{101, XKB_KEY_F9},
    NamedKey{109, XKB_KEY_F10},
    NamedKey{103, XKB_KEY_F11},
    NamedKey{111, XKB_KEY_F12},
    NamedKey{105, XKB_KEY_F13},
    NamedKey{107, XKB_KEY_F14},
    NamedKey{113, XKB_KEY_F15},
    NamedKey{106, XKB_KEY_F16},
    NamedKey{64, XKB_KEY_F17},
    NamedKey{79, XKB_KEY_F18},
    NamedKey{80, XKB_KEY_F19},
    NamedKey{90, XKB_KEY_F20},
    NamedKey{114, XKB_KEY_Help},
    NamedKey{114, XKB_KEY_Insert},
    NamedKey{115, XKB_KEY_Home},
    NamedKey{116, XKB_KEY_Prior},
    NamedKey{117, XKB_KEY_Delete},
    NamedKey{119, XKB_KEY_End},
    NamedKey{121, XKB_KEY_Next},
    NamedKey{123, XKB_KEY_Left},
    NamedKey{124, XKB_KEY_Right},
    NamedKey{125, XKB_KEY_Down},
    NamedKey{126, XKB_KEY_Up},
    NamedKey{65, XKB_KEY_KP_Decimal},
    NamedKey{65, XKB_KEY_KP_Delete},
    NamedKey{65, XKB_KEY_KP_Separator},
    NamedKey{67, XKB_KEY_KP_Multiply},
    NamedKey{69, XKB_KEY_KP_Add},
    NamedKey{71, XKB_KEY_Num_Lock},
    NamedKey{71, XKB_KEY_Clear},
    NamedKey{75, XKB_KEY_KP_Divide},
    NamedKey{76, XKB_KEY_KP_Enter},
    NamedKey{78, XKB_KEY_KP_Subtract},
    NamedKey{81, XKB_KEY_KP_Equal},
    NamedKey{82, XKB_KEY_KP_0},
    NamedKey{82, XKB_KEY_KP_Insert},
    NamedKey{83, XKB_KEY_KP_1},
    NamedKey{83, XKB_KEY_KP_End},
    NamedKey{84, XKB_KEY_KP_2},
    NamedKey{84, XKB_KEY_KP_Down},
    NamedKey{85, XKB_KEY_KP_3},
    NamedKey{85, XKB_KEY_KP_Next},
    NamedKey{86, XKB_KEY_KP_4},
    NamedKey{86, XKB_KEY_KP_Left},
    NamedKey{87, XKB_KEY_KP_5},
    NamedKey{87, XKB_KEY_KP_Begin},
    NamedKey{88, XKB_KEY_KP_6},
    NamedKey{88, XKB_KEY_KP_Right},
    NamedKey{89, XKB_KEY_KP_7},
    NamedKey{89, XKB_KEY_KP_Home},
    NamedKey{91, XKB_KEY_KP_8},
    NamedKey{91, XKB_KEY_KP_Up},
    NamedKey{92, XKB_KEY_KP_9},
    NamedKey{92, XKB_KEY_KP_Prior},
    NamedKey{93, XKB_KEY_yen},
    NamedKey{95, XKB_KEY_KP_F4},
    NamedKey{102, XKB_KEY_Eisu_toggle},
    NamedKey{104, XKB_KEY_Hiragana_Katakana},
    NamedKey{72, XKB_KEY_XF86AudioRaiseVolume},
    NamedKey{73, XKB_KEY_XF86AudioLowerVolume},
    NamedKey{74, XKB_KEY_XF86AudioMute},
    NamedKey{110, XKB_KEY_Menu},
};

struct Place {
    std::uint8_t code; // macOS
    std::uint8_t key;  // X key code under Linux: the kernel's code plus 8
};

constexpr std::array places = {
    // Letters.
    Place{0, 38},
    Place{11, 56},
    Place{8, 54},
    Place{2, 40},
    Place{14, 26},
    Place{3, 41},
    Place{5, 42},
    Place{4, 43},
    Place{34, 31},
    Place{38, 44},
    Place{40, 45},
    Place{37, 46},
    Place{46, 58},
    Place{45, 57},
    Place{31, 32},
    Place{35, 33},
    Place{12, 24},
    Place{15, 27},
    Place{1, 39},
    Place{17, 28},
    Place{32, 30},
    Place{9, 55},
    Place{13, 25},
    Place{7, 53},
    Place{16, 29},
    Place{6, 52},
    // Digits 1 to 0.
    Place{18, 10},
    Place{19, 11},
    Place{20, 12},
    Place{21, 13},
    Place{23, 14},
    Place{22, 15},
    Place{26, 16},
    Place{28, 17},
    Place{25, 18},
    Place{29, 19},
    // Punctuation: - = [ ] \ ; ' ` , . / and the extra key of ISO keyboards.
    Place{27, 20},
    Place{24, 21},
    Place{33, 34},
    Place{30, 35},
    Place{42, 51},
    Place{41, 47},
    Place{39, 48},
    Place{50, 49},
    Place{43, 59},
    Place{47, 60},
    Place{44, 61},
    Place{10, 94},
    // Function keys; F13 to F20 are where no keymap names them (F13 is XF86Tools in the usual one).
    Place{122, 67},
    Place{120, 68},
    Place{99, 69},
    Place{118, 70},
    Place{96, 71},
    Place{97, 72},
    Place{98, 73},
    Place{100, 74},
    Place{101, 75},
    Place{109, 76},
    Place{103, 95},
    Place{111, 96},
    Place{105, 191},
    Place{107, 192},
    Place{113, 193},
    Place{106, 194},
    Place{64, 195},
    Place{79, 196},
    Place{80, 197},
    Place{90, 198},
    // Return, Tab, space, Backspace, Escape.
    Place{36, 36},
    Place{48, 23},
    Place{49, 65},
    Place{51, 22},
    Place{53, 9},
    // Modifiers.
    Place{55, 133},
    Place{54, 134},
    Place{56, 50},
    Place{60, 62},
    Place{57, 66},
    Place{58, 64},
    Place{61, 108},
    Place{59, 37},
    Place{62, 105},
    // Insert, Home, Page Up, Delete, End, Page Down and the arrows.
    Place{114, 118},
    Place{115, 110},
    Place{116, 112},
    Place{117, 119},
    Place{119, 115},
    Place{121, 117},
    Place{123, 113},
    Place{124, 114},
    Place{125, 116},
    Place{126, 111},
    // Keypad: . * + Num Lock / Enter - = and 0 to 9.
    Place{65, 91},
    Place{67, 63},
    Place{69, 86},
    Place{71, 77},
    Place{75, 106},
    Place{76, 104},
    Place{78, 82},
    Place{81, 125},
    Place{82, 90},
    Place{83, 87},
    Place{84, 88},
    Place{85, 89},
    Place{86, 83},
    Place{87, 84},
    Place{88, 85},
    Place{89, 79},
    Place{91, 80},
    Place{92, 81},
    // Volume up, down, mute; the menu key.
    Place{72, 123},
    Place{73, 122},
    Place{74, 121},
    Place{110, 135},
    // Japanese keyboards: yen, underscore, keypad comma.
    Place{93, 132},
    Place{94, 97},
    Place{95, 129},
};

struct Modifier {
    std::uint32_t x;
    std::uint32_t flag;
    std::uint32_t hotKey;
};

constexpr std::array modifiers = {
    Modifier{XCB_MOD_MASK_SHIFT, ShiftModifier, HotKeyShift},
    Modifier{XCB_MOD_MASK_CONTROL, ControlModifier, HotKeyControl},
    Modifier{XCB_MOD_MASK_1, OptionModifier, HotKeyOption},
    Modifier{XCB_MOD_MASK_4, CommandModifier, HotKeyCommand},
};

constexpr std::uint32_t foreignKeys = 256; // X key codes are bytes

} // namespace

std::uint16_t macKeyCode(std::uint32_t keysym, std::uint32_t xKeyCode) {
    for (const NamedKey& key : namedKeys) {
        if (key.keysym == keysym) {
            return key.code;
        }
    }
    for (const Place& place : places) {
        if (place.key == xKeyCode) {
            return place.code;
        }
    }
    return static_cast<std::uint16_t>(firstForeignKeyCode + xKeyCode % foreignKeys);
}

std::optional<std::uint32_t> keysymOfMacKeyCode(std::uint32_t keyCode) {
    for (const NamedKey& key : namedKeys) {
        if (key.code == keyCode) {
            return key.keysym;
        }
    }
    return std::nullopt;
}

std::optional<std::uint8_t> placeOfMacKeyCode(std::uint32_t keyCode) {
    if (keyCode >= firstForeignKeyCode && keyCode < firstForeignKeyCode + foreignKeys) {
        return static_cast<std::uint8_t>(keyCode - firstForeignKeyCode);
    }
    for (const Place& place : places) {
        if (place.code == keyCode) {
            return place.key;
        }
    }
    return std::nullopt;
}

std::uint32_t modifierFlagsOfXState(std::uint32_t state) {
    std::uint32_t flags = NoModifiers;
    for (const Modifier& modifier : modifiers) {
        flags |= (state & modifier.x) != 0 ? modifier.flag : 0;
    }
    return flags;
}

std::uint16_t xModifiersOfHotKey(std::uint32_t hotKeyModifiers) {
    std::uint32_t mask = 0;
    for (const Modifier& modifier : modifiers) {
        mask |= (hotKeyModifiers & modifier.hotKey) != 0 ? modifier.x : 0;
    }
    return static_cast<std::uint16_t>(mask);
}

} // namespace rb
