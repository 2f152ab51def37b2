#pragma once

#include "platform/Displays.h"
#include "platform/Screens.h"
#include "tests/contract/DesktopUnderTest.h"

#include <algorithm>

namespace rb {

class DisplaysContract : public ContractTest {};

TEST_P(DisplaysContract, DisplaysAreTheScreensWithTheirModes) {
    const auto displays = desktop().displays.all();
    const auto screens = desktop().screens.all();
    ASSERT_FALSE(displays.empty());
    ASSERT_EQ(displays.size(), screens.size());
    int mains = 0;
    for (std::size_t i = 0; i < displays.size(); ++i) {
        const ConnectedDisplay& display = displays[i];
        EXPECT_EQ(display.identity.id, screens[i].id) << "in the same order, by the same numbers";
        mains += display.main ? 1 : 0;
        ASSERT_TRUE(display.currentMode);
        EXPECT_NE(std::find(display.modes.begin(), display.modes.end(), *display.currentMode), display.modes.end());
        for (const DisplayMode& mode : display.modes) {
            EXPECT_GT(mode.width * mode.height * mode.pixelWidth * mode.pixelHeight, 0U);
            EXPECT_GE(mode.refreshRate, 0);
        }
        const auto same = desktop().displays.display(display.identity.id);
        ASSERT_TRUE(same);
        EXPECT_EQ(same->identity, display.identity);
        EXPECT_EQ(same->currentMode, display.currentMode);
    }
    EXPECT_EQ(mains, 1);
    constexpr std::uint32_t nobody = 0xFFFFFFF0;
    EXPECT_FALSE(desktop().displays.display(nobody));
}

TEST_P(DisplaysContract, AnotherModeIsToldAndRead) {
    int told = 0;
    const ConnectedDisplay before = desktop().displays.all().front();
    Handle changes = desktop().displays.onChange([&] { ++told; });
    user().live(0.05);
    EXPECT_EQ(told, 0);
    user().changeMode();
    EXPECT_TRUE(user().until([&] { return told > 0; }));
    const ConnectedDisplay after = desktop().displays.all().front();
    EXPECT_EQ(after.identity, before.identity);
    EXPECT_NE(after.currentMode, before.currentMode);
    EXPECT_NE(std::find(before.modes.begin(), before.modes.end(), after.currentMode), before.modes.end());
    changes.reset();
    user().live(0.2);
    const int heard = told;
    user().changeMode();
    user().live(0.2);
    EXPECT_EQ(told, heard) << "nobody listens any more";
}

} // namespace rb
