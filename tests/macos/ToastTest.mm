#include "app/Toasts.h"
#include "desktops/macos/Desktop.h"
#include "platform/Panels.h"
#include "tests/macos/MacTest.h"

#include <optional>

namespace rb {

namespace {

class ToastTest : public fake::MacTest {
protected:
    void SetUp() override {
        NSScreen* screen = [[NSScreen alloc] init];
        fake::answer(screen, "frame", CGRectMake(0, 0, 1440, 900));
        fake::answer(screen, "visibleFrame", CGRectMake(0, 0, 1440, 875));
        fake::answer("+[NSScreen screens]", @[ screen ]);
        fake::answer("+[NSEvent mouseLocation]", CGPointMake(700, 900));
        fake::answer("-[NSAttributedString size]", CGSizeMake(80.5, 16));
        fake::answer("-[NSImage imageWithSymbolConfiguration:]", [[NSImage alloc] init]);
        fake::answer("-[NSImage size]", CGSizeMake(18, 18));
        fake::answer("-[NSStatusBar thickness]", 22.0);
        fake::answer("-[NSWindow backingScaleFactor]", 2.0);
        desktop_.emplace();
    }
    void TearDown() override {
        toasts_.reset();
        desktop_.reset();
        MacTest::TearDown();
    }
    void show() {
        toasts_.emplace(desktop_->desktop());
        toasts_->RBShowToast("晾衣绳已清空", "trash", SystemColor::Blue);
    }
    static CAAnimation* added(const std::string& key) {
        for (const auto& call : fake::calls("-[CALayer addAnimation:forKey:]")) {
            if (call.string(1) == key) {
                return call.object(0);
            }
        }
        return nil;
    }

    std::optional<MacDesktop> desktop_;
    std::optional<Toasts> toasts_;
};

TEST_F(ToastTest, showsANonactivatingPanelUnderTheMenuBar) {
    show();
    const auto made = fake::lastCall("-[NSPanel initWithContentRect:styleMask:backing:defer:]");
    // Less than the least width: text 81, space 8, symbol 18, margins 40.
    EXPECT_EQ(made.rect(0).size.width, 150);
    EXPECT_EQ(made.rect(0).size.height, 38);
    EXPECT_EQ(made.rect(0).origin.x, 645);
    EXPECT_EQ(made.rect(0).origin.y, 900 - 25 - 38 - 6);
    EXPECT_EQ(made.integer(1), NSWindowStyleMaskBorderless | NSWindowStyleMaskNonactivatingPanel);
    NSPanel* panel = made.receiver();
    EXPECT_EQ(panel.level, 25);
    EXPECT_EQ(panel.collectionBehavior, 0x151u);
    EXPECT_FALSE(panel.opaque);
    EXPECT_TRUE(panel.hasShadow);
    EXPECT_TRUE(panel.ignoresMouseEvents);
    EXPECT_FALSE(panel.releasedWhenClosed);
    EXPECT_FALSE(panel.hidesOnDeactivate);
    EXPECT_FALSE(panel.canBecomeKeyWindow);
    EXPECT_FALSE(panel.canBecomeMainWindow);
    EXPECT_EQ(fake::calls("-[NSWindow orderFrontRegardless]").size(), 1u);
    EXPECT_TRUE(fake::calls("-[NSWindow makeKeyAndOrderFront:]").empty());
}

TEST_F(ToastTest, isFilledBeforeItShows) {
    show();
    std::optional<std::size_t> background;
    std::optional<std::size_t> front;
    const auto calls = fake::calls();
    for (std::size_t index = 0; index < calls.size(); ++index) {
        if (calls[index].fits("-[CALayer setCornerRadius:] 19")) {
            background = index;
        }
        if (calls[index].fits("-[NSWindow orderFrontRegardless]")) {
            front = index;
        }
    }
    ASSERT_TRUE(background && front);
    EXPECT_LT(*background, *front);
    EXPECT_TRUE([fake::lastCall("-[CATextLayer setString:]").object(0) isEqual:@"晾衣绳已清空"]);
}

TEST_F(ToastTest, entersAndLeavesWithCoreAnimation) {
    fake::answer("-[CASpringAnimation settlingDuration]", 0.9);
    show();
    endTurn();
    CASpringAnimation* drop = (CASpringAnimation*)added("rb.drop");
    ASSERT_NE(drop, nil);
    EXPECT_EQ([drop.fromValue doubleValue], 34.2);
    EXPECT_EQ(drop.damping, 17);
    EXPECT_EQ(drop.duration, 0.9);
    CABasicAnimation* fade = (CABasicAnimation*)added("rb.fade");
    EXPECT_TRUE([fade.keyPath isEqualToString:@"opacity"]);
    EXPECT_EQ(fade.duration, 0.18);

    fake::advance(1.49);
    endTurn();
    EXPECT_EQ(added("rb.retract"), nil);
    fake::advance(0.02);
    endTurn();
    CAAnimationGroup* retract = (CAAnimationGroup*)added("rb.retract");
    ASSERT_NE(retract, nil);
    EXPECT_EQ(retract.duration, 0.22);
    EXPECT_EQ(retract.fillMode, kCAFillModeForwards);
    EXPECT_TRUE(fake::calls("-[NSWindow orderOut:]").empty());

    [(id<CAAnimationDelegate>)retract.delegate animationDidStop:retract finished:YES];
    EXPECT_GE(fake::calls("-[NSWindow orderOut:]").size(), 1u);
    EXPECT_EQ(fake::live("RBMacPanel"), 1) << "until the completion is over";
    drop = nil;
    fade = nil;
    retract = nil;
    fake::forgetCalls();
    @autoreleasepool {
        fake::runMainQueue();
    }
    EXPECT_EQ(fake::live("RBMacPanel"), 0);
}

TEST_F(ToastTest, needsAScreen) {
    fake::answer("+[NSScreen screens]", @[]);
    show();
    EXPECT_TRUE(fake::calls("-[NSPanel initWithContentRect:styleMask:backing:defer:]").empty());
}

} // namespace

} // namespace rb
