#include "tests/macos/Program.h"

#import <QuartzCore/QuartzCore.h>

#include <cmath>

namespace rb {

namespace {

// Whether the window server says that a program fills the screen.
bool fullScreen = false;
int mainConnection() {
    return 1;
}
const void* copySpaces(int /*connection*/) {
    return (__bridge_retained const void*)@[ @{@"Current Space" : @{@"type" : fullScreen ? @4 : @0}} ];
}

// The clothesline in the whole program.
class LineTest : public ProgramTest {
protected:
    void SetUp() override {
        NSScreen* screen = [[NSScreen alloc] init];
        fake::answer(screen, "frame", CGRectMake(0, 0, 1440, 900));
        fake::answer(screen, "visibleFrame", CGRectMake(0, 0, 1440, 875));
        fake::answer(
            screen, "deviceDescription",
            @{@"NSScreenNumber" : @69});
        fake::answer("+[NSScreen screens]", @[ screen ]);
        fake::answer("-[NSStatusBar thickness]", 22.0);
        fake::answer("-[NSWindow backingScaleFactor]", 2.0);
        fake::answer("-[NSFileManager fileExistsAtPath:]", true);
        fake::answer("+[NSSound soundNamed:]", [[NSSound alloc] init]);
        fake::answer("-[NSSound play]", true);
        fullScreen = false;
        point(700, 100);
    }
    // Starts the program with the line's panel found.
    void launchLine(std::function<void()> script) {
        launch([&] {
            made_ = fake::calls("-[NSPanel initWithContentRect:styleMask:backing:defer:]");
            ASSERT_EQ(made_.size(), 1u);
            panel_ = made_.front().receiver();
            script();
            panel_ = nil;
            made_.clear();
        });
    }
    static void point(double x, double y) { fake::answer("+[NSEvent mouseLocation]", CGPointMake(x, y)); }
    static void pass(double seconds) {
        const double until = fake::now() + seconds;
        while (fake::now() < until) {
            fake::advance(0.05);
            endTurn();
        }
    }
    void reveal() {
        point(700, 890);
        pass(0.5);
        ASSERT_TRUE(panel_.visible);
    }
    void hang(NSArray<NSString*>* paths) {
        NSMutableArray* urls = [NSMutableArray array];
        for (NSString* path in paths) {
            [urls addObject:[NSURL fileURLWithPath:path]];
        }
        [applicationDelegate() application:NSApplication.sharedApplication openURLs:urls];
        pass(0.5);
    }
    // The drawn tree: glow and sliding layer in the root, rope and cards in the sliding one.
    CALayer* slide() {
        CALayer* root = panel_.contentView.layer.sublayers.firstObject.sublayers.firstObject;
        EXPECT_EQ(root.sublayers.count, 2u);
        return root.sublayers.lastObject;
    }

    std::vector<fake::Call> made_;
    NSPanel* panel_ = nil;
};

TEST_F(LineTest, livesInAClickThroughPanelThatNeverTakesTheFocus) {
    launchLine([this] {
        const fake::Call& made = made_.front();
        EXPECT_EQ(made.rect(0).size.width, 800);
        EXPECT_EQ(made.rect(0).size.height, 210);
        EXPECT_EQ(made.integer(1), NSWindowStyleMaskNonactivatingPanel);
        EXPECT_EQ(made.integer(2), NSBackingStoreBuffered);
        EXPECT_EQ(made.integer(3), 0);
        EXPECT_EQ(panel_.level, NSFloatingWindowLevel);
        EXPECT_EQ(panel_.collectionBehavior,
                  NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorStationary |
                      NSWindowCollectionBehaviorIgnoresCycle | NSWindowCollectionBehaviorFullScreenAuxiliary);
        EXPECT_FALSE(panel_.opaque);
        EXPECT_FALSE(panel_.hasShadow);
        EXPECT_FALSE(panel_.hidesOnDeactivate);
        EXPECT_FALSE(panel_.movable);
        EXPECT_FALSE(panel_.releasedWhenClosed);
        EXPECT_TRUE(panel_.becomesKeyOnlyIfNeeded);
        EXPECT_TRUE(panel_.ignoresMouseEvents);
        EXPECT_FALSE(panel_.canBecomeKeyWindow);
        EXPECT_FALSE(panel_.canBecomeMainWindow);
        EXPECT_EQ(panel_.backgroundColor, NSColor.clearColor);
        EXPECT_TRUE(fake::called("-[NSWindow setFrame:display:] {{0, 665}, {1440, 210}}, NO"));
        EXPECT_FALSE(panel_.visible);
    });
}

TEST_F(LineTest, dropsWhenThePointerRestsInTheMenuBarAndLeavesAfterIt) {
    launchLine([this] {
        reveal();
        EXPECT_TRUE(fake::calls("-[NSWindow makeKeyAndOrderFront:]").empty());
        EXPECT_EQ(fake::calls("-[NSWindow orderFrontRegardless]").size(), 1u);
        CASpringAnimation* drop = (CASpringAnimation*)[slide() animationForKey:@"rb.slide"];
        ASSERT_TRUE([drop isMemberOfClass:CASpringAnimation.class]);
        EXPECT_TRUE([drop.keyPath isEqualToString:@"transform.translation.y"]);
        EXPECT_EQ([drop.fromValue doubleValue], 222);
        EXPECT_EQ([drop.toValue doubleValue], 0);
        EXPECT_EQ(drop.mass, 1);
        EXPECT_EQ(drop.stiffness, 224);
        EXPECT_EQ(drop.damping, 24.5);
        EXPECT_EQ(slide().transform.m42, 0) << "the model is there already";

        pass(2);
        point(700, 100);
        pass(0.4);
        EXPECT_TRUE([[slide() animationForKey:@"rb.slide"] isMemberOfClass:CASpringAnimation.class]);
        pass(0.2);
        CABasicAnimation* retract = (CABasicAnimation*)[slide() animationForKey:@"rb.slide"];
        ASSERT_TRUE([retract isMemberOfClass:CABasicAnimation.class]) << "under the same key";
        EXPECT_LT(std::abs([retract.fromValue doubleValue]), 0.5);
        EXPECT_EQ([retract.toValue doubleValue], 222);
        EXPECT_EQ(retract.duration, 0.22);
        EXPECT_TRUE(panel_.visible);
        pass(0.4);
        EXPECT_FALSE(panel_.visible);
        EXPECT_EQ(panel_.contentView.layer.sublayers.count, 0u) << "nothing is drawn while it is away";
    });
}

TEST_F(LineTest, takesTheMouseOnlyOverCardsAndTellsTheWindowServerOnlyChanges) {
    launchLine([this] {
        hang(@[ @"/Users/test/a.pdf" ]);
        ASSERT_TRUE(panel_.visible);
        pass(2);
        fake::forgetCalls();
        point(100, 700);
        pass(0.3);
        EXPECT_TRUE(panel_.ignoresMouseEvents);
        EXPECT_TRUE(fake::calls("-[NSWindow setIgnoresMouseEvents:]").empty()) << "it did before";
        point(720, 665 + 120);
        pass(0.3);
        EXPECT_FALSE(panel_.ignoresMouseEvents);
        EXPECT_EQ(fake::calls("-[NSWindow setIgnoresMouseEvents:]").size(), 1u);
        point(100, 700);
        pass(0.3);
        EXPECT_TRUE(panel_.ignoresMouseEvents);
    });
}

TEST_F(LineTest, filesOpenedWithTheProgramHang) {
    launchLine([this] {
        hang(@[ @"/Users/test/a.pdf", @"/Users/test/文件夹" ]);
        NSArray* paths = @[ @"/Users/test/a.pdf", @"/Users/test/文件夹" ];
        EXPECT_TRUE([[NSUserDefaults.standardUserDefaults arrayForKey:@"ClotheslinePaths"] isEqual:paths]);
        EXPECT_EQ(slide().sublayers.count, 3u) << "the rope and two cards";
        EXPECT_EQ(fake::calls("-[NSSound play]").size(), 1u);
        CASpringAnimation* arrival = (CASpringAnimation*)[slide().sublayers.lastObject animationForKey:@"rb.arrive"];
        ASSERT_NE(arrival, nil);
        EXPECT_TRUE(arrival.additive);
        EXPECT_EQ([arrival.fromValue doubleValue], 46);
        [applicationDelegate() application:NSApplication.sharedApplication
                                  openURLs:@[ [NSURL URLWithString:@"https://a.example/b"] ]];
        pass(0.5);
        EXPECT_EQ(slide().sublayers.count, 3u) << "no file";
    });
}

TEST_F(LineTest, watchesTheMouseButtonsOfAllPrograms) {
    launchLine([this] {
        const auto global = fake::lastCall("+[NSEvent addGlobalMonitorForEventsMatchingMask:handler:]");
        const auto local = fake::lastCall("+[NSEvent addLocalMonitorForEventsMatchingMask:handler:]");
        EXPECT_EQ(static_cast<NSEventMask>(global.integer(0)), NSEventMaskLeftMouseDown | NSEventMaskRightMouseDown);
        EXPECT_EQ(local.integer(0), global.integer(0));
        reveal();
        global.block<void (^)(NSEvent*)>(1)(nil); // a click in the menu bar
        endTurn();
        EXPECT_TRUE([[slide() animationForKey:@"rb.slide"] isMemberOfClass:CABasicAnimation.class]);
        pass(1);
        EXPECT_FALSE(panel_.visible);
    });
    EXPECT_EQ(fake::calls("+[NSEvent removeMonitor:]").size(), 3u) << "with the menu bar hider's";
}

TEST_F(LineTest, staysAwayFromFullScreenPrograms) {
    fake::provideFunction("CGSMainConnectionID", reinterpret_cast<void*>(mainConnection));
    fake::provideFunction("CGSCopyManagedDisplaySpaces", reinterpret_cast<void*>(copySpaces));
    launchLine([this] {
        fullScreen = true;
        point(700, 890);
        pass(1);
        EXPECT_FALSE(panel_.visible);
        fullScreen = false;
        pass(0.5);
        EXPECT_TRUE(panel_.visible);
    });
}

} // namespace

} // namespace rb
