#include "tests/app/AppFixture.h"

#include "desktops/virtual/Menus.h"

namespace rb {

namespace {

class HotKeySettingsTest : public AppTest {
protected:
    HotKeySettingsTest() {
        launch();
        desktop_.chooseMenuItem("设置快捷键…");
    }
    VirtualWindow& window() { return desktop_.windows().titled(settingsTitle); }
    const HotKeyRecorderView& recorder() { return *app_->hotKeySettings().recorderView(); }
    Color border() { return recorder().layer()->model().borderColor; }
    Color color(SystemColor color) { return desktop_.appearance().color(color); }
    void press(std::uint16_t code, std::uint32_t flags, const std::string& characters) {
        ASSERT_TRUE(desktop_.keyboard().press({code, flags, characters}));
    }
    static std::map<VirtualHotKeys::Combination, HotKeyId> only(std::uint32_t code, std::uint32_t modifiers) {
        return {{{code, modifiers}, {0x524B4259, 1}}};
    }
};

TEST_F(HotKeySettingsTest, OpensInFrontReadyForTheNextKey) {
    EXPECT_TRUE(desktop_.application().isActive());
    ASSERT_EQ(desktop_.windows().keyWindow(), &window());
    EXPECT_EQ(window().firstResponder(), "recorder");
    EXPECT_EQ(border(), color(SystemColor::Green));
    EXPECT_EQ(recorder().labelText(), "F13");
    const Rect screen = desktop_.screens().all().front().visibleFrame;
    EXPECT_NEAR(window().frame().midX(), screen.midX(), 0.5);

    const WindowSpec& spec = window().spec();
    EXPECT_EQ(spec.contentSize, (Size{480, 285}));
    EXPECT_TRUE(spec.closable);
    EXPECT_FALSE(spec.resizable);
    EXPECT_FALSE(spec.miniaturizable);
}

TEST_F(HotKeySettingsTest, ThePageIsLaidOutWithItsMargins) {
    const Rect heading = window().frameOf("设置一键锁屏快捷键");
    const std::string explanation =
        "点击下方方框，再按下你想使用的键。推荐把机械键盘的一个闲置键映射为 F13–F20，避免普通字母在打字时误锁屏。";
    const Rect description = window().frameOf(explanation);
    const Rect recorderFrame = window().frameOf("recorder");
    const Rect restore = window().frameOf("恢复 F13");
    const Rect cancel = window().frameOf("取消");
    const Rect save = window().frameOf("保存");
    EXPECT_EQ(heading.minX(), 26);
    EXPECT_EQ(heading.maxY(), 285 - 22);
    EXPECT_EQ(description.minX(), 26);
    EXPECT_EQ(description.maxX(), 480 - 26);
    EXPECT_EQ(description.maxY(), heading.minY() - 10);
    EXPECT_EQ(recorderFrame.minX(), 26);
    EXPECT_EQ(recorderFrame.maxX(), 480 - 26);
    EXPECT_EQ(recorderFrame.maxY(), description.minY() - 18);
    EXPECT_EQ(recorderFrame.height, 78);
    EXPECT_EQ(restore.minX(), 26);
    EXPECT_EQ(save.maxX(), 480 - 26);
    EXPECT_EQ(cancel.maxX(), save.minX() - 10);
    for (const Rect& button : {restore, cancel, save}) {
        EXPECT_EQ(button.minY(), 20);
    }
    EXPECT_EQ(recorder().layer()->model().bounds.size(), recorderFrame.size());

    int matched = 0;
    for (const PlacedView& placed : layOut(window().content(), {480, 285}, desktop_.textMeter())) {
        if (const auto* label = std::get_if<LabelView>(&placed.view->content); label && label->font.size == 22) {
            EXPECT_EQ(label->font.weight, FontWeight::Bold);
            ++matched;
        } else if (label && label->text == explanation) {
            EXPECT_EQ(label->color, TextColor::SecondaryLabel);
            EXPECT_TRUE(label->wraps);
            ++matched;
        } else if (const auto* button = std::get_if<ButtonView>(&placed.view->content)) {
            EXPECT_EQ(button->keyEquivalent, button->title == "保存" ? "\r" : "") << "one default button";
            ++matched;
        }
    }
    EXPECT_EQ(matched, 5);
}

TEST_F(HotKeySettingsTest, SavingTakesTheKeyAndRemembersIt) {
    press(37, ControlModifier | OptionModifier, "l");
    EXPECT_EQ(recorder().labelText(), "⌃⌥L");
    EXPECT_EQ(window().firstResponder(), "recorder") << "it keeps listening";
    EXPECT_EQ(statusLine(), "当前快捷键：F13") << "nothing yet";
    EXPECT_EQ(desktop_.hotKeys().registered(), only(105, 0));
    EXPECT_TRUE(savedHotKey(desktop_).empty());

    window().clickButton("保存");
    EXPECT_EQ(desktop_.hotKeys().registered(), only(37, 0x1800));
    EXPECT_EQ(statusLine(), "当前快捷键：⌃⌥L");
    EXPECT_EQ(toolTip(), "Rook Bay：⌃⌥L 锁屏");
    EXPECT_FALSE(window().isVisible());
    const PropertyDictionary saved{{"HotKeyCode", 37}, {"HotKeyModifiers", 0x1800}, {"HotKeyDisplay", "⌃⌥L"}};
    EXPECT_EQ(savedHotKey(desktop_), saved);

    quit();
    launch();
    EXPECT_EQ(desktop_.hotKeys().registered(), only(37, 0x1800)) << "also the next time";
    EXPECT_EQ(statusLine(), "当前快捷键：⌃⌥L");
}

TEST_F(HotKeySettingsTest, AKeyHeldElsewhereIsRefusedAndTheOldOneStays) {
    desktop_.hotKeys().holdElsewhere(107, 0);
    press(107, NoModifiers, "");
    window().clickButton("保存");
    ASSERT_TRUE(desktop_.alerts().current());
    EXPECT_EQ(desktop_.alerts().current()->messageText, hotKeyRefused);
    desktop_.alerts().answerNext(0);
    EXPECT_EQ(desktop_.hotKeys().registered(), only(105, 0));
    EXPECT_TRUE(savedHotKey(desktop_).empty());
    EXPECT_EQ(statusLine(), "当前快捷键：F13");
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(recorder().labelText(), "F14") << "as the user left it";

    press(113, NoModifiers, ""); // another try
    window().clickButton("保存");
    EXPECT_EQ(desktop_.hotKeys().registered(), only(113, 0));
    EXPECT_EQ(desktop_.alerts().shown().size(), 1U);
}

TEST_F(HotKeySettingsTest, AFailingRollbackIsSilent) {
    desktop_.alerts().answerNext(0);
    app_->hotKey().unregisterHotKey();
    desktop_.hotKeys().holdElsewhere(105, 0);
    desktop_.hotKeys().holdElsewhere(107, 0);
    press(107, NoModifiers, "");
    window().clickButton("保存");
    desktop_.advance(1);
    EXPECT_EQ(desktop_.alerts().shown().size(), 1U) << "only for the new key";
    EXPECT_EQ(app_->hotKey().current().display, "F13");
    EXPECT_TRUE(desktop_.hotKeys().registered().empty());
}

TEST_F(HotKeySettingsTest, RestoringAndCancellingChangeNothing) {
    press(37, CommandModifier, "l");
    window().clickButton("保存");
    const PropertyDictionary saved = savedHotKey(desktop_);

    desktop_.chooseMenuItem("设置快捷键…");
    EXPECT_EQ(recorder().labelText(), "⌘L");
    window().clickButton("恢复 F13");
    EXPECT_EQ(recorder().labelText(), "F13");
    EXPECT_EQ(app_->hotKeySettings().pending(), HotKey{});
    EXPECT_EQ(window().firstResponder(), "recorder");
    window().clickButton("取消");
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(border(), color(SystemColor::ControlAccent)) << "no longer listening";
    EXPECT_EQ(desktop_.hotKeys().registered(), only(37, 0x0100));
    EXPECT_EQ(savedHotKey(desktop_), saved);

    desktop_.chooseMenuItem("设置快捷键…");
    EXPECT_EQ(recorder().labelText(), "⌘L") << "what was pending is dropped";
    EXPECT_EQ(border(), color(SystemColor::Green));
    EXPECT_EQ(desktop_.windows().count(), 1U) << "the window is made once";
    window().clickButton("恢复 F13");
    window().clickButton("保存");
    EXPECT_EQ(desktop_.hotKeys().registered(), only(105, 0));
    EXPECT_EQ(desktop_.userDefaults().objectForKey("HotKeyDisplay"), "F13");
}

TEST_F(HotKeySettingsTest, SavingTheSameKeyAgainIsNoConflictWithOurselves) {
    window().clickButton("保存");
    EXPECT_TRUE(desktop_.alerts().shown().empty());
    EXPECT_EQ(desktop_.hotKeys().registered(), only(105, 0));
    EXPECT_FALSE(window().isVisible());
}

TEST_F(HotKeySettingsTest, ReturnIsRecordedWhileListeningNotSaved) {
    press(36, NoModifiers, "\r");
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(recorder().labelText(), "Return");
}

TEST_F(HotKeySettingsTest, TheTitleBarClosesItAndTheMenuKeyOpensItAgain) {
    press(37, CommandModifier, "l");
    window().close();
    EXPECT_FALSE(window().isVisible());
    EXPECT_TRUE(savedHotKey(desktop_).empty());
    menus::chooseByKey(desktop_.statusMenu(), ",", CommandModifier);
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(recorder().labelText(), "F13");
}

TEST_F(HotKeySettingsTest, TheBorderFollowsFocusAndAppearance) {
    desktop_.appearance().setDark(true);
    EXPECT_EQ(border(), color(SystemColor::Green)) << "the dark green";
    EXPECT_EQ(recorder().layer()->model().backgroundColor, color(SystemColor::ControlBackground));
    window().orderOut();
    EXPECT_EQ(border(), color(SystemColor::ControlAccent));
    window().makeKeyAndOrderFront();
    window().clickBox("recorder");
    EXPECT_EQ(border(), color(SystemColor::Green));
}

} // namespace

} // namespace rb
