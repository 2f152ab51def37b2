#include "desktops/macos/StatusBar.h"
#include "desktops/macos/WindowList.h"

#include "tests/macos/MacTest.h"

#include <vector>

namespace rb {

namespace {

class StatusItemTest : public fake::MacTest {
protected:
    void TearDown() override {
        item_ = nullptr;
        MacTest::TearDown();
    }
    StatusItem& item() {
        if (!item_) {
            item_ = bar_.createItem();
        }
        return *item_;
    }

    MacStatusBar bar_;
    std::unique_ptr<StatusItem> item_;
};

TEST_F(StatusItemTest, carriesItsPropertiesOver) {
    item().setLength(22);
    item().setAutosaveName("RookBayHiderControl");
    item().setToolTip("点击展开或收起菜单栏图标，右键查看选项");
    item().setVisible(false);
    item().setLayerBacked(true);
    EXPECT_TRUE(fake::called("-[NSStatusItem setLength:] 22"));
    EXPECT_TRUE(fake::called("-[NSStatusItem setAutosaveName:] @\"RookBayHiderControl\""));
    EXPECT_TRUE(fake::called("-[NSStatusBarButton setToolTip:] @\"点击展开或收起菜单栏图标，右键查看选项\""));
    EXPECT_TRUE(fake::called("-[NSStatusItem setVisible:] NO"));
    EXPECT_TRUE(fake::called("-[NSStatusBarButton setWantsLayer:] YES"));
    EXPECT_FALSE(item().isVisible());
    item().setVisible(true);
    EXPECT_TRUE(item().isVisible());
    EXPECT_TRUE(bar_.longItemsPushOthersOut());
}

TEST_F(StatusItemTest, tellsOfEitherButtonWhenItComesUp) {
    std::vector<StatusItemClick> clicks;
    item().setAction([&](const StatusItemClick& click) { clicks.push_back(click); });
    const auto mask = fake::lastCall("-[NSStatusBarButton sendActionOn:]");
    EXPECT_EQ(static_cast<NSEventMask>(mask.integer(0)), NSEventMaskLeftMouseUp | NSEventMaskRightMouseUp);
    NSStatusBarButton* button = mask.receiver();
    NSEvent* event = [[NSEvent alloc] init];
    [NSApplication sharedApplication];
    fake::answer("-[NSApplication currentEvent]", event);
    fake::answer(event, "type", NSEventTypeLeftMouseUp);
    fake::answer(event, "modifierFlags", NSEventModifierFlagControl);
    fake::press(button);
    fake::answer(event, "type", NSEventTypeRightMouseUp);
    fake::answer(event, "modifierFlags", 0);
    fake::press(button);
    ASSERT_EQ(clicks.size(), 2u);
    EXPECT_FALSE(clicks[0].rightButton);
    EXPECT_EQ(clicks[0].modifierFlags, ControlModifier);
    EXPECT_TRUE(clicks[1].rightButton);

    item_ = nullptr;
    EXPECT_EQ(button.target, nil) << "the system still holds the button";
}

TEST_F(StatusItemTest, aMenuHangsAtTheItemOnlyForOneClick) {
    const auto menu = std::make_shared<Menu>("菜单栏图标");
    menu->addItem({.title = "one", .action = [](MenuItem&) {}});
    item().popUpMenu(menu);
    EXPECT_TRUE(fake::calledInOrder(
        {"-[NSStatusItem setMenu:]", "-[NSStatusBarButton performClick:] nil", "-[NSStatusItem setMenu:] nil"}));
}

TEST_F(StatusItemTest, pushesItsPictureUnderTheKey) {
    CALayer* layer = [CALayer layer];
    fake::answer("-[NSStatusBarButton layer]", layer);
    const PushTransition push{.from = PushTransition::From::Right, .duration = 0.22, .timing = RBEaseOut};
    item().addTransition("rb.flip", push);
    const auto added = fake::lastCall("-[CALayer addAnimation:forKey:]");
    EXPECT_EQ(added.receiver(), layer);
    EXPECT_EQ(added.string(1), "rb.flip");
    EXPECT_EQ(fake::lastCall("-[CATransition setType:]").object(0), kCATransitionPush);
    EXPECT_EQ(fake::lastCall("-[CATransition setSubtype:]").object(0), kCATransitionFromRight);
    EXPECT_EQ(fake::lastCall("-[CATransition setDuration:]").real(0), 0.22);
    const auto timing = fake::lastCall("+[CAMediaTimingFunction functionWithControlPoints::::]");
    EXPECT_FLOAT_EQ(static_cast<float>(timing.real(0)), 0.2f);
    EXPECT_FLOAT_EQ(static_cast<float>(timing.real(3)), 1.0f);
    item().addTransition("rb.flip", {.from = PushTransition::From::Left, .duration = 0.22});
    EXPECT_EQ(fake::lastCall("-[CATransition setSubtype:]").object(0), kCATransitionFromLeft);

    fake::answer("-[NSStatusBarButton layer]", id(nil));
    fake::forgetCalls();
    item().addTransition("rb.flip", push);
    EXPECT_FALSE(fake::called("-[CALayer addAnimation:forKey:]"));
}

TEST_F(StatusItemTest, knowsItsPlaceOnceItHasAWindow) {
    fake::answer("-[NSStatusBarButton window]", id(nil));
    EXPECT_FALSE(item().frame());
    EXPECT_EQ(item().showPopover({}), nullptr);
    NSWindow* window = [[NSWindow alloc] init];
    fake::answer("-[NSStatusBarButton window]", window);
    fake::answer(window, "frame", CGRectMake(1200, 958, 22, 24));
    EXPECT_EQ(item().frame(), (Rect{1200, 958, 22, 24}));
}

TEST_F(StatusItemTest, aPopoverHangsBelowItAndTellsItsEnd) {
    NSWindow* window = [[NSWindow alloc] init];
    fake::answer("-[NSStatusBarButton window]", window);
    int closed = 0;
    auto popover =
        item().showPopover({.content = {.content = LabelView{.text = "text"}}, .didClose = [&] { ++closed; }});
    ASSERT_NE(popover, nullptr);
    const auto shown = fake::lastCall("-[NSPopover showRelativeToRect:ofView:preferredEdge:]");
    EXPECT_EQ(shown.integer(2), static_cast<long>(NSRectEdgeMinY));
    EXPECT_TRUE(fake::called("-[NSPopover setAnimates:] YES"));
    EXPECT_EQ(fake::lastCall("-[NSPopover setBehavior:]").integer(0), static_cast<long>(NSPopoverBehaviorTransient));
    popover->close();
    EXPECT_TRUE(fake::called("-[NSPopover performClose:] nil"));
    EXPECT_EQ(closed, 0) << "not before the animation has ended";
    @autoreleasepool {
        NSPopover* native = shown.receiver();
        [native.delegate popoverDidClose:[NSNotification notificationWithName:@"NSPopoverDidCloseNotification"
                                                                       object:native]];
        EXPECT_EQ(closed, 1);
        popover = nullptr;
        EXPECT_EQ(native.delegate, nil);
        EXPECT_TRUE(fake::called("-[NSPopover close]"));
    }
}

TEST_F(StatusItemTest, listsTheLayersOfWindowsOnTheScreen) {
    const MacWindowList windows;
    NSArray* list = @[ @{(__bridge NSString*)kCGWindowLayer : @101}, @{}, @{(__bridge NSString*)kCGWindowLayer : @25} ];
    fake::onCall("CGWindowListCopyWindowInfo", [&](fake::Call& call) {
        EXPECT_EQ(call.integer(0), 17) << "on the screen, without elements of the desktop";
        call.answer((__bridge_retained const void*)list);
    });
    EXPECT_EQ(windows.layersOnScreen(), (std::vector<int>{101, 0, 25}));
}

} // namespace

} // namespace rb
