#include "tests/session/SessionTest.h"

#include <csignal>
#include <xkbcommon/xkbcommon-keysyms.h>

// The settings window under a window manager, driven by mouse and keyboard.
namespace rb {

namespace {

constexpr std::uint16_t controlAlt = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;

class SettingsTest : public SessionTest {
protected:
    SettingsTest() { useCountingLocker(); }

    // Through the menu with its key equivalent; the focus is in the recorder afterwards.
    void openSettings() {
        ASSERT_NE(openMenu(), 0U);
        x().tapKey(XKB_KEY_comma, {XKB_KEY_Control_L});
        ASSERT_TRUE(waitForSettings());
    }
    [[nodiscard]] bool waitForSettings() {
        return waitUntil([this] {
            const auto window = settings();
            return window && x().focus() == window->window;
        });
    }
    [[nodiscard]] bool waitUntilClosed() {
        return waitUntil([this] { return !settings(); });
    }
    // Settings are written a moment after they take effect.
    [[nodiscard]] bool waitForSavedCode(int code) {
        return waitUntil([&] { return defaults()["HotKeyCode"].toInt() == code; });
    }
    std::optional<WindowFacts> settings() { return x().viewableTitled(settingsTitle); }
    void clickSave() { clickFromLowerRight(26 + 25); }
    void clickCancel() { clickFromLowerRight(26 + 50 + 45); }
    void clickReset() {
        const auto window = settings();
        ASSERT_TRUE(window);
        x().click(window->x + 26 + 30, window->y + window->height - 20 - 12);
    }

private:
    void clickFromLowerRight(int distance) {
        const auto window = settings();
        ASSERT_TRUE(window);
        x().click(window->x + window->width - distance, window->y + window->height - 20 - 12);
    }
};

TEST_F(SettingsTest, ANewKeyIsRecordedSavedAndTaken) {
    startFocusedTerminal();
    Program& rookBay = startRookBay();
    openSettings();
    ASSERT_TRUE(settings());
    EXPECT_EQ(settings()->width, 480);
    EXPECT_EQ(settings()->height, 285);
    x().tapKey(XKB_KEY_l, {XKB_KEY_Control_L, XKB_KEY_Alt_L});
    EXPECT_TRUE(x().isKeyHeld(XKB_KEY_F13)) << "nothing takes effect before it is saved";
    EXPECT_FALSE(x().isKeyHeld(XKB_KEY_l, controlAlt));
    clickSave();
    ASSERT_TRUE(waitUntilClosed());
    EXPECT_TRUE(waitForSavedCode(37));
    EXPECT_EQ(defaults()["HotKeyModifiers"].toInt(), 6144);
    EXPECT_EQ(defaults()["HotKeyDisplay"].toString(), "⌃⌥L");
    EXPECT_TRUE(x().isKeyHeld(XKB_KEY_l, controlAlt));
    EXPECT_FALSE(x().isKeyHeld(XKB_KEY_F13)) << "the old key is free for others";
    x().tapKey(XKB_KEY_l, {XKB_KEY_Control_L, XKB_KEY_Alt_L});
    EXPECT_TRUE(waitForLockings(1));

    // It lasts over a restart, and F13 comes back by its button.
    rookBay.signal(SIGTERM);
    EXPECT_EQ(rookBay.waitForExit(), 0);
    launch();
    ASSERT_TRUE(waitUntil([this] { return x().isKeyHeld(XKB_KEY_l, controlAlt); }));
    EXPECT_FALSE(x().isKeyHeld(XKB_KEY_F13));
    openSettings();
    clickReset();
    clickSave();
    ASSERT_TRUE(waitUntilClosed());
    EXPECT_TRUE(x().isKeyHeld(XKB_KEY_F13));
    EXPECT_FALSE(x().isKeyHeld(XKB_KEY_l, controlAlt));
    EXPECT_TRUE(waitForSavedCode(105));
    EXPECT_EQ(defaults()["HotKeyDisplay"].toString(), "F13");
}

TEST_F(SettingsTest, CancelChangesNothing) {
    startRookBay();
    openSettings();
    x().tapKey(XKB_KEY_l, {XKB_KEY_Control_L, XKB_KEY_Alt_L});
    clickCancel();
    ASSERT_TRUE(waitUntilClosed());
    EXPECT_TRUE(x().isKeyHeld(XKB_KEY_F13));
    EXPECT_FALSE(x().isKeyHeld(XKB_KEY_l, controlAlt));
    EXPECT_FALSE(defaults().contains("HotKeyCode"));
    // The abandoned combination is forgotten: saving right after opening saves what is active.
    openSettings();
    clickSave();
    ASSERT_TRUE(waitUntilClosed());
    EXPECT_TRUE(waitForSavedCode(105));
}

TEST_F(SettingsTest, AKeyHeldElsewhereIsRefused) {
    startRookBay();
    ASSERT_TRUE(x().grabKey(XKB_KEY_l, controlAlt | XCB_MOD_MASK_2)) << "one lock variant is enough";
    openSettings();
    x().tapKey(XKB_KEY_l, {XKB_KEY_Control_L, XKB_KEY_Alt_L});
    clickSave();
    ASSERT_TRUE(waitUntil([this] { return alerts().size() == 1; }));
    EXPECT_TRUE(settings()) << "the window stays for another try";
    x().tapKey(XKB_KEY_Return);
    ASSERT_TRUE(waitUntil([this] { return alerts().empty(); }));
    EXPECT_FALSE(defaults().contains("HotKeyCode"));
    EXPECT_FALSE(x().isKeyHeld(XKB_KEY_l, controlAlt)) << "nothing half taken stays behind";
    EXPECT_TRUE(x().isKeyHeld(XKB_KEY_F13));
    x().tapKey(XKB_KEY_F13);
    EXPECT_TRUE(waitForLockings(1));
    // The other program lets go; the same window saves it now.
    x().ungrabKey(XKB_KEY_l, controlAlt | XCB_MOD_MASK_2);
    clickSave();
    ASSERT_TRUE(waitUntilClosed());
    EXPECT_TRUE(x().isKeyHeld(XKB_KEY_l, controlAlt));
}

TEST_F(SettingsTest, TheWindowManagerClosesItAndItOpensAgain) {
    startFocusedTerminal();
    Program& rookBay = startRookBay();
    for (int round = 0; round < 2; ++round) {
        ASSERT_NE(openMenu(), 0U);
        // The last but one item; the menu wraps around.
        x().tapKey(XKB_KEY_Up);
        x().tapKey(XKB_KEY_Up);
        x().tapKey(XKB_KEY_Return);
        ASSERT_TRUE(waitForSettings());
        x().requestClose(settings()->window);
        ASSERT_TRUE(waitUntilClosed());
    }
    EXPECT_TRUE(rookBay.isRunning()) << "the last window's end isn't the program's";
    EXPECT_TRUE(x().isKeyHeld(XKB_KEY_F13));
}

} // namespace

} // namespace rb
