#include "tests/app/AppFixture.h"

namespace rb {

namespace {

using Deed = VirtualSessionLock::Deed;

class LockHotKeyTest : public AppTest {
protected:
    // Deeds and their times since `start`, as "saver 0.0 sleep 0.6 ".
    std::string deeds(double start) {
        std::string text;
        for (const auto& entry : desktop_.sessionLock().log()) {
            char line[32];
            std::snprintf(line, sizeof line, "%s %.3f ", entry.deed == Deed::StartScreenSaver ? "saver" : "sleep",
                          entry.time - start);
            text += line;
        }
        return text;
    }
};

TEST_F(LockHotKeyTest, TheSavedKeyIsLoadedOrF13) {
    struct Case {
        const char* name;
        PropertyDictionary stored;
        HotKey expected;
    };
    const std::vector<Case> cases{
        {"nothing saved", {}, {105, 0, "F13"}},
        {"all saved", {{"HotKeyCode", 37}, {"HotKeyModifiers", 0x1800}, {"HotKeyDisplay", "⌃⌥L"}}, {37, 0x1800, "⌃⌥L"}},
        {"code alone", {{"HotKeyCode", 113}}, {113, 0, "自定义快捷键"}},
        {"no code", {{"HotKeyModifiers", 0x0100}, {"HotKeyDisplay", "⌘X"}}, {105, 0, "F13"}},
        {"code zero is a key", {{"HotKeyCode", 0}, {"HotKeyDisplay", "A"}}, {0, 0, "A"}},
        {"32 bits count", {{"HotKeyCode", std::int64_t{0x100000000} + 107}, {"HotKeyDisplay", "F14"}}, {107, 0, "F14"}},
        {"text display of another kind",
         {{"HotKeyCode", 107}, {"HotKeyDisplay", PropertyArray{}}},
         {107, 0, "自定义快捷键"}},
    };
    for (const Case& tested : cases) {
        SCOPED_TRACE(tested.name);
        VirtualDesktop desktop;
        for (const auto& [key, value] : tested.stored) {
            desktop.userDefaults().setObject(key, value);
        }
        AppDelegate app(desktop.services());
        desktop.application().run(app);
        EXPECT_EQ(app.hotKey().current(), tested.expected);
        EXPECT_EQ(desktop.statusMenu().items().at(1)->title, "当前快捷键：" + tested.expected.display);
        EXPECT_EQ(desktop.statusBar().items().front()->toolTip(), "Rook Bay：" + tested.expected.display + " 锁屏");
        const std::map<VirtualHotKeys::Combination, HotKeyId> registered{
            {{tested.expected.code, tested.expected.modifiers}, {0x524B4259, 1}}};
        EXPECT_EQ(desktop.hotKeys().registered(), registered);
        EXPECT_EQ(savedHotKey(desktop), tested.stored) << "launching saves nothing";
        desktop.application().terminate();
    }
}

TEST_F(LockHotKeyTest, AKeyHeldElsewhereIsToldAndTheMenuStillLocks) {
    desktop_.hotKeys().holdElsewhere(105, 0);
    AppDelegate& app = launch();
    ASSERT_TRUE(desktop_.alerts().current());
    EXPECT_EQ(*desktop_.alerts().current(),
              (Alert{.messageText = hotKeyRefused,
                     .informativeText = "它可能已被系统或其他 App 占用，请换一个键。推荐使用 F13–F20。"}));
    EXPECT_TRUE(desktop_.application().isActive()) << "the alert comes to the front";
    EXPECT_TRUE(desktop_.hotKeys().registered().empty());
    EXPECT_FALSE(app.hotKey().isRegistered());
    EXPECT_EQ(desktop_.statusMenu().items().size(), 12U) << "the launch went on";
    desktop_.alerts().answerNext(0);

    const double start = desktop_.runLoop().now();
    desktop_.chooseMenuItem("立即锁屏并关闭显示器");
    desktop_.advance(1);
    EXPECT_EQ(deeds(start), "saver 0.000 sleep 0.600 ");

    EXPECT_FALSE(app.hotKey().registerCurrentHotKey({.showingError = false}));
    EXPECT_EQ(desktop_.alerts().shown().size(), 1U) << "quiet when asked to be";
    desktop_.hotKeys().releaseElsewhere(105, 0);
    EXPECT_TRUE(app.hotKey().registerCurrentHotKey({.showingError = true}));
    EXPECT_EQ(desktop_.alerts().shown().size(), 1U);
    EXPECT_EQ(desktop_.hotKeys().registered().size(), 1U);
}

TEST_F(LockHotKeyTest, AFailedRegistrationLeavesNoOlderKeyBehind) {
    AppDelegate& app = launch();
    desktop_.hotKeys().holdElsewhere(107, 0);
    app.hotKey().setCurrent({.code = 107, .modifiers = 0, .display = "F14"});
    EXPECT_FALSE(app.hotKey().registerCurrentHotKey({.showingError = false}));
    EXPECT_TRUE(desktop_.hotKeys().registered().empty());
}

TEST_F(LockHotKeyTest, TheKeyLocksAndThenDarkensTheDisplays) {
    desktop_.userDefaults().setObject("MenuBarHiderEnabled", false); // whose timers would count too
    launch();
    const std::size_t ticking = desktop_.runLoop().pendingTimers().size();
    const double start = desktop_.runLoop().now();
    EXPECT_TRUE(desktop_.hotKeys().press(105, 0));
    EXPECT_EQ(deeds(start), "") << "not inside the event handler";
    desktop_.advance(0);
    EXPECT_EQ(deeds(start), "saver 0.000 ");
    desktop_.advance(0.599);
    EXPECT_EQ(deeds(start), "saver 0.000 ");
    desktop_.advance(0.001);
    EXPECT_EQ(deeds(start), "saver 0.000 sleep 0.600 ");
    EXPECT_FALSE(desktop_.sessionLock().log().back().onMainThread);
    desktop_.advance(10);
    EXPECT_EQ(desktop_.sessionLock().log().size(), 2U);
    EXPECT_EQ(desktop_.runLoop().pendingTimers().size(), ticking) << "nothing of the lock ticks on";
}

TEST_F(LockHotKeyTest, TwoPressesInQuickSuccessionAreTwoLocks) {
    launch();
    const double start = desktop_.runLoop().now();
    desktop_.hotKeys().press(105, 0);
    desktop_.advance(0.2);
    desktop_.chooseMenuItem("立即锁屏并关闭显示器");
    desktop_.advance(2);
    EXPECT_EQ(deeds(start), "saver 0.000 saver 0.200 sleep 0.600 sleep 0.800 ");
}

TEST_F(LockHotKeyTest, OnlyTheIdentifierDecides) {
    launch();
    const double start = desktop_.runLoop().now();
    desktop_.hotKeys().sendPressed({});                                 // unreadable
    desktop_.hotKeys().sendPressed({.signature = 0x524B4259, .id = 2}); // another key of ours
    desktop_.advance(1);
    EXPECT_EQ(deeds(start), "");
    desktop_.hotKeys().sendPressed({.signature = 0, .id = 1}); // the signature isn't compared
    desktop_.advance(0);
    EXPECT_EQ(desktop_.sessionLock().log().size(), 1U);
}

} // namespace

} // namespace rb
