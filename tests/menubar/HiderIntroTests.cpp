#include "tests/menubar/HiderFixture.h"

namespace rb {

namespace {

class HiderIntroTest : public HiderTest {
protected:
    HiderIntroTest() { desktop.userDefaults().removeObject("MenuBarHiderIntroShown"); }

    VirtualPopover& intro() {
        if (desktop.statusBar().popover() == nullptr) {
            throw ImpossibleAct("there is no introduction");
        }
        return *desktop.statusBar().popover();
    }
    void askForIt() {
        menus::open(*hider.settingsMenu());
        menus::choose(*hider.settingsMenu(), "怎么隐藏图标？");
    }
    bool isShown() { return desktop.statusBar().popover() != nullptr; }
};

TEST_F(HiderIntroTest, ShowsItselfOnceASecondAfterTheFirstInstallation) {
    start();
    desktop.advance(0.9);
    EXPECT_FALSE(isShown());
    desktop.advance(0.2);
    ASSERT_TRUE(isShown());
    EXPECT_TRUE(desktop.application().isActive());
    EXPECT_TRUE(desktop.userDefaults().boolForKey("MenuBarHiderIntroShown"));
    movePointer(inBar);
    movePointer(below);
    desktop.advance(60);
    EXPECT_TRUE(isShown());
    EXPECT_FALSE(hider.collapsed()) << "nothing collapses while it is open";

    intro().clickButton("知道了");
    desktop.advance(1);
    EXPECT_FALSE(isShown());
    desktop.advance(9.4);
    EXPECT_TRUE(hider.collapsed()) << "its end arms the collapse";

    hider.uninstall();
    hider.install();
    desktop.advance(5);
    EXPECT_FALSE(isShown());
}

TEST_F(HiderIntroTest, TellsHow) {
    start();
    desktop.advance(1.1);
    const auto& stack = std::get<StackView>(intro().content().content);
    EXPECT_EQ(stack.spacing, 10);
    EXPECT_EQ(stack.insets, (Insets{.top = 16, .left = 18, .bottom = 16, .right = 18}));
    ASSERT_EQ(stack.children.size(), 3U);
    EXPECT_EQ(std::get<LabelView>(stack.children[0].content).text, "隐藏不常用的菜单栏图标");
    EXPECT_EQ(stack.children[1].width, 290);
    EXPECT_EQ(std::get<LabelView>(stack.children[1].content).text,
              "1. 按住 ⌘，把想隐藏的图标拖到 • 的左边。\n"
              "2. 点 ‹ › 收起或展开；收起后常用图标不会被刘海挤掉。\n"
              "3. 展开后会按设置自动收起，右键箭头可以修改。");
}

TEST_F(HiderIntroTest, ReturnAndAPressElsewhereCloseIt) {
    start();
    desktop.advance(1.1);
    intro().pressReturn();
    desktop.advance(VirtualPopover::closingTime + 0.1);
    EXPECT_FALSE(isShown());
    for (int round = 0; round < 2; ++round) {
        askForIt();
        askForIt(); // again while it is shown
        ASSERT_TRUE(isShown());
        intro().pressElsewhere();
        desktop.advance(VirtualPopover::closingTime + 0.1);
        EXPECT_FALSE(isShown());
        EXPECT_FALSE(desktop.runLoop().pendingTimers().empty()) << "armed again";
    }
}

TEST_F(HiderIntroTest, AskedForItSwitchesTheHiderOnAndExpands) {
    desktop.userDefaults().setObject("MenuBarHiderEnabled", false);
    start();
    askForIt();
    EXPECT_TRUE(hider.enabled());
    ASSERT_TRUE(isShown());
    intro().clickButton("知道了");
    desktop.advance(3);
    EXPECT_FALSE(isShown()) << "not a second time by itself";
    item(control).click();
    ASSERT_TRUE(hider.collapsed());
    hider.showIntro();
    EXPECT_FALSE(hider.collapsed());
    EXPECT_TRUE(isShown());
}

TEST_F(HiderIntroTest, WithoutAWindowThereIsNothingToPointAt) {
    start();
    desktop.statusBar().setHasWindows(false);
    desktop.advance(1.1);
    EXPECT_FALSE(isShown());
    EXPECT_FALSE(desktop.application().isActive());
    EXPECT_TRUE(desktop.userDefaults().boolForKey("MenuBarHiderIntroShown"));
}

TEST_F(HiderIntroTest, ComesASecondAfterTheInstallationWhateverIsSwitchedMeanwhile) {
    start();
    desktop.advance(0.5);
    hider.toggleEnabled();
    EXPECT_FALSE(item(control).isVisible());
    desktop.advance(0.6);
    EXPECT_TRUE(isShown());
    EXPECT_TRUE(hider.enabled()) << "to be introduced it must be there";
    EXPECT_TRUE(item(control).isVisible());
    intro().clickButton("知道了");
    desktop.advance(3);
    EXPECT_FALSE(isShown()) << "once";
}

TEST_F(HiderIntroTest, StoppingClosesIt) {
    start();
    desktop.advance(1.1);
    hider.stop();
    desktop.advance(1);
    EXPECT_FALSE(isShown());

    desktop.userDefaults().removeObject("MenuBarHiderIntroShown");
    hider.start();
    desktop.advance(0.5);
    hider.stop();
    desktop.advance(1);
    EXPECT_FALSE(isShown()) << "nor does one come that was under way";
}

} // namespace

} // namespace rb
