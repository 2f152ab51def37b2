#include "desktops/linux/KeyCodes.h"

#include "platform/HotKeys.h"
#include "platform/Keyboard.h"

#include <gtest/gtest.h>

#include <map>
#include <xcb/xproto.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace rb {

namespace {

TEST(KeyCodes, NamedKeysGoByTheirNameWhereverTheUserPutThem) {
    constexpr std::uint32_t capsLockKey = 66;
    EXPECT_EQ(macKeyCode(XKB_KEY_F13, capsLockKey), 105);
    EXPECT_EQ(macKeyCode(XKB_KEY_Return, 36), 36);
    EXPECT_EQ(macKeyCode(XKB_KEY_ISO_Left_Tab, 23), 48) << "Tab with Shift";
    EXPECT_EQ(macKeyCode(XKB_KEY_KP_Home, 79), 89) << "the keypad's 7 without Num Lock";
    EXPECT_EQ(macKeyCode(XKB_KEY_Home, 110), 115);
    EXPECT_EQ(macKeyCode(XKB_KEY_BackSpace, 22), 51);
    EXPECT_EQ(macKeyCode(XKB_KEY_Delete, 119), 117);
}

TEST(KeyCodes, CharactersGoByTheirPlaceUnderEveryLayout) {
    constexpr std::uint32_t keyOfL = 46;
    EXPECT_EQ(macKeyCode(XKB_KEY_l, keyOfL), 37);
    EXPECT_EQ(macKeyCode(XKB_KEY_L, keyOfL), 37);
    EXPECT_EQ(macKeyCode(XKB_KEY_Cyrillic_de, keyOfL), 37);
    EXPECT_EQ(macKeyCode(XKB_KEY_y, 52), 6) << "a German keyboard types y where an American one types z";
    EXPECT_EQ(macKeyCode(XKB_KEY_ampersand, 10), 18) << "a French keyboard's 1";
    EXPECT_FALSE(keysymOfMacKeyCode(37));
    EXPECT_EQ(placeOfMacKeyCode(37), keyOfL);
}

TEST(KeyCodes, TheUsualKeymapHasNoNamesForF13ToF20) {
    const std::uint32_t codes[] = {105, 107, 113, 106, 64, 79, 80, 90};
    for (std::uint32_t index = 0; index < 8; ++index) {
        EXPECT_EQ(keysymOfMacKeyCode(codes[index]), XKB_KEY_F13 + index);
        EXPECT_EQ(placeOfMacKeyCode(codes[index]), 191 + index);
        EXPECT_EQ(macKeyCode(XKB_KEY_XF86Tools, 191 + index), codes[index]);
    }
}

TEST(KeyCodes, WhatAKeyPressReportsCanBeGrabbedAgain) {
    // Every key of a keyboard: its code leads back to it, and no two keys share a code.
    std::map<std::uint16_t, std::uint32_t> keys;
    for (std::uint32_t key = 8; key < 256; ++key) {
        const std::uint16_t code = macKeyCode(XKB_KEY_NoSymbol, key);
        EXPECT_EQ(placeOfMacKeyCode(code), key);
        EXPECT_TRUE(keys.emplace(code, key).second) << key << " and " << keys[code];
    }
    // The keysym that is looked for is the one that reports the code.
    for (std::uint32_t code = 0; code < firstForeignKeyCode; ++code) {
        if (const auto keysym = keysymOfMacKeyCode(code)) {
            EXPECT_EQ(macKeyCode(*keysym, 255), code);
        }
    }
    EXPECT_FALSE(placeOfMacKeyCode(0xFFFF));
    EXPECT_FALSE(placeOfMacKeyCode(127));
}

TEST(KeyCodes, ModifiersTranslateAndLocksDropOut) {
    const std::uint32_t all = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
    const std::uint32_t locks = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2 | XCB_MOD_MASK_5 | XCB_BUTTON_MASK_1 | 0x2000;
    EXPECT_EQ(modifierFlagsOfXState(all | locks), ShiftModifier | ControlModifier | OptionModifier | CommandModifier);
    EXPECT_EQ(modifierFlagsOfXState(locks), NoModifiers);
    EXPECT_EQ(modifierFlagsOfXState(XCB_MOD_MASK_1), OptionModifier);
    EXPECT_EQ(xModifiersOfHotKey(HotKeyCommand), XCB_MOD_MASK_4);
    EXPECT_EQ(xModifiersOfHotKey(HotKeyShift | HotKeyControl | HotKeyOption | HotKeyCommand), all);
    EXPECT_EQ(xModifiersOfHotKey(0x80), 0);
}

} // namespace

} // namespace rb
