#pragma once

#include "platform/HotKeys.h"
#include "tests/contract/DesktopUnderTest.h"

#include <vector>

namespace rb {

class HotKeysContract : public ContractTest {
protected:
    static constexpr std::uint32_t f13 = 105;
    static constexpr std::uint32_t letterL = 37;
    static constexpr HotKeyId lock{0x524B4259, 1};
    static constexpr HotKeyId other{0x54455354, 7};
    HotKeys& hotKeys() { return desktop().hotKeys; }
};

TEST_P(HotKeysContract, APressIsToldOncePerPressWithItsIdentifier) {
    std::vector<HotKeyId> pressed;
    const Handle handler = hotKeys().installHandler([&](HotKeyId id) { pressed.push_back(id); });
    const Handle plain = hotKeys().registerHotKey(f13, 0, lock);
    const Handle modified = hotKeys().registerHotKey(letterL, HotKeyControl | HotKeyOption, other);
    ASSERT_TRUE(plain);
    ASSERT_TRUE(modified);
    user().pressHotKey(f13, 0);
    ASSERT_TRUE(user().until([&] { return !pressed.empty(); }));
    user().pressHotKey(letterL, HotKeyControl | HotKeyOption);
    user().pressHotKey(letterL, HotKeyControl); // not ours
    user().until([&] { return pressed.size() > 1; });
    user().live(0.1);
    EXPECT_EQ(pressed, (std::vector<HotKeyId>{lock, other}));
}

TEST_P(HotKeysContract, OneHolderPerCombination) {
    {
        const Handle elsewhere = user().holdHotKeyElsewhere(f13, HotKeyShift);
        EXPECT_FALSE(hotKeys().registerHotKey(f13, HotKeyShift, lock)) << "another program holds it";
        EXPECT_TRUE(hotKeys().registerHotKey(f13, HotKeyCommand, lock)) << "other modifiers are another key";
    }
    Handle ours = hotKeys().registerHotKey(f13, HotKeyShift, lock);
    EXPECT_TRUE(ours) << "the other program let go";
    EXPECT_FALSE(hotKeys().registerHotKey(f13, HotKeyShift, other)) << "we hold it ourselves";
    ours.reset();
    EXPECT_TRUE(hotKeys().registerHotKey(f13, HotKeyShift, other));
}

TEST_P(HotKeysContract, AKeyThatDoesNotExistIsRefused) {
    EXPECT_FALSE(hotKeys().registerHotKey(0xFFFF, 0, lock));
}

TEST_P(HotKeysContract, ReleasedKeysAndDroppedHandlersAreSilent) {
    int first = 0;
    int second = 0;
    Handle own;
    own = hotKeys().installHandler([&](HotKeyId) {
        ++first;
        own.reset(); // legal inside its own callback
    });
    const Handle stays = hotKeys().installHandler([&](HotKeyId) { ++second; });
    Handle key = hotKeys().registerHotKey(f13, 0, lock);
    user().pressHotKey(f13, 0);
    ASSERT_TRUE(user().until([&] { return second == 1; })) << second;
    user().pressHotKey(f13, 0);
    ASSERT_TRUE(user().until([&] { return second == 2; })) << second;
    key.reset();
    user().pressHotKey(f13, 0);
    user().live(0.1);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
}

} // namespace rb
