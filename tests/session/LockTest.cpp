#include "tests/session/SessionTest.h"

#include <filesystem>
#include <xkbcommon/xkbcommon-keysyms.h>

// The one key that locks, pressed on a real keyboard as far as the X server can tell.
namespace rb {

namespace {

class LockTest : public SessionTest {
protected:
    // Key presses that reach this test's own connection while it holds the key down that long.
    int repeatsOf(std::uint32_t keysym, double seconds) {
        int presses = 0;
        x().pressKey(keysym);
        EXPECT_FALSE(waitUntil(
            [&] {
                while (const auto event = ownReply(xcb_poll_for_event(x().connection()))) {
                    presses += (event->response_type & 0x7f) == XCB_KEY_PRESS ? 1 : 0;
                }
                return false;
            },
            seconds));
        x().releaseKey(keysym);
        return presses;
    }
};

TEST_F(LockTest, TheKeyStartsTheLockerAndDarkensTheScreenAfterwards) {
    session().writeDefaults(R"({"LinuxLockCommand": "i3lock -n -c 1d2b3a"})");
    startFocusedTerminal();
    startRookBay();
    EventLog log(session().display());
    const double pressed = monotonicNow();
    x().tapKey(XKB_KEY_F13);
    const auto locked = log.waitFor([](const SessionEvent& event) {
        return event.kind == SessionEventKind::Mapped && event.window.instance == "i3lock";
    });
    ASSERT_TRUE(locked);
    EXPECT_LT(locked->time - pressed, 0.6);
    EXPECT_EQ(locked->window.width, x().screen().width_in_pixels);
    EXPECT_EQ(locked->window.height, x().screen().height_in_pixels);
    EXPECT_EQ(log.count([](const SessionEvent& event) { return event.kind == SessionEventKind::SaverOn; }), 0U)
        << "the lock comes first";
    const auto dark = log.waitFor([](const SessionEvent& event) { return event.kind == SessionEventKind::SaverOn; });
    ASSERT_TRUE(dark);
    EXPECT_GE(dark->time - pressed, 0.6);
    EXPECT_LT(dark->time - pressed, 2);
}

TEST_F(LockTest, AHeldKeyLocksOnce) {
    useCountingLocker();
    startRookBay();
    ASSERT_TRUE(x().grabKey(XKB_KEY_space));
    ASSERT_GT(repeatsOf(XKB_KEY_space, 0.4), 3) << "this server repeats held keys";

    x().pressKey(XKB_KEY_F13);
    EXPECT_TRUE(waitForLockings(1));
    EXPECT_TRUE(staysTrue([this] { return lockings() == 1; }, 0.6));
    x().releaseKey(XKB_KEY_F13);
    x().tapKey(XKB_KEY_F13);
    EXPECT_TRUE(waitForLockings(2));
    x().tapKey(XKB_KEY_F13);
    EXPECT_TRUE(waitForLockings(3)) << "presses in quick succession are presses";
}

TEST_F(LockTest, TheLockModifiersDontMatterButTheOthersDo) {
    useCountingLocker();
    startRookBay();
    int expected = 0;
    for (const std::uint32_t toggled : {XKB_KEY_Caps_Lock, XKB_KEY_Num_Lock, XKB_KEY_Caps_Lock, XKB_KEY_Num_Lock}) {
        x().tapKey(static_cast<std::uint32_t>(toggled));
        SCOPED_TRACE("modifiers " + std::to_string(x().modifierState()));
        x().tapKey(XKB_KEY_F13);
        EXPECT_TRUE(waitForLockings(++expected));
    }
    x().tapKey(XKB_KEY_F13, {XKB_KEY_Shift_L});
    x().tapKey(XKB_KEY_F13, {XKB_KEY_Control_L});
    EXPECT_TRUE(staysTrue([&] { return lockings() == expected; }, 0.3));
}

TEST_F(LockTest, TheMenuLocksAsTheKeyDoes) {
    useCountingLocker();
    startFocusedTerminal();
    startRookBay();
    EventLog log(session().display());
    ASSERT_NE(openMenu(), 0U);
    x().tapKey(XKB_KEY_Down);
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitForLockings(1));
    EXPECT_TRUE(log.waitFor([](const SessionEvent& event) { return event.kind == SessionEventKind::SaverOn; }));
    EXPECT_TRUE(waitUntil([this] { return x().viewableOfClass(menuClass).empty(); }));
}

TEST_F(LockTest, TheGrabFollowsTheKeyboardMap) {
    useCountingLocker();
    startRookBay();
    // F13 moves to another key.
    ASSERT_EQ(session().start({"xmodmap", "-e", "keycode 191 = XF86Tools", "-e", "keycode 202 = F13"}).waitForExit(),
              0);
    ASSERT_TRUE(waitUntil([this] { return x().keycode(XKB_KEY_F13) == 202; }));
    EXPECT_TRUE(waitUntil([this] { return x().isKeyHeld(XKB_KEY_F13); }));
    EXPECT_TRUE(waitUntil([this] { return !x().isKeycodeHeld(191); })) << "the old key is given back";
    x().tapKeycode(202);
    EXPECT_TRUE(waitForLockings(1));
    // A new layout has no F13 at all; the key in its usual place stands in.
    ASSERT_EQ(session().start({"setxkbmap", "de"}).waitForExit(), 0);
    ASSERT_TRUE(waitUntil([this] { return x().keycode(XKB_KEY_F13) == 0; }));
    EXPECT_TRUE(waitUntil([this] { return x().isKeycodeHeld(191); }));
    x().tapKeycode(191);
    EXPECT_TRUE(waitForLockings(2));
}

TEST_F(LockTest, AKeyHeldElsewhereIsToldAndTheMenuStillLocks) {
    useCountingLocker();
    ASSERT_TRUE(x().grabKey(XKB_KEY_F13));
    Program& rookBay = launch();
    ASSERT_TRUE(waitUntil([this] { return alerts().size() == 1; }));
    EXPECT_EQ(alerts().front().window, x().focus()) << "the program comes to the front for its alert";
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitUntil([this] { return alerts().empty(); }));
    ASSERT_NE(openMenu(), 0U);
    x().tapKey(XKB_KEY_Down);
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitForLockings(1));
    EXPECT_TRUE(rookBay.isRunning());
}

TEST_F(LockTest, WhereNothingCanLockTheLogSaysSo) {
    // A folder of programs without any locker.
    const std::string bin = session().folder() + "/bin";
    std::filesystem::create_directory(bin);
    session().environment["PATH"] = bin;
    Program& rookBay = startRookBay();
    x().tapKey(XKB_KEY_F13);
    EXPECT_TRUE(waitUntil([&] { return rookBay.output().find("Rook Bay: ") != std::string::npos; }));
    EXPECT_THAT(rookBay.output(), testing::HasSubstr("lock"));
    EXPECT_TRUE(rookBay.isRunning());
}

class PlainKeyboardTest : public SessionTest {
protected:
    PlainKeyboardTest()
        : SessionTest({.f13 = false}) {}
};

TEST_F(PlainKeyboardTest, WithoutF13InTheMapTheKeyInItsPlaceLocks) {
    useCountingLocker();
    startRookBay();
    ASSERT_EQ(x().keycode(XKB_KEY_F13), 0);
    x().tapKeycode(191);
    EXPECT_TRUE(waitForLockings(1));
}

} // namespace

} // namespace rb
