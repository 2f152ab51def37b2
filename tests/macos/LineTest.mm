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

// Hands on the one card of a line.
class CardHandsTest : public LineTest {
protected:
    void withCard(std::function<void()> script) {
        fake::onCall("-[NSView convertPoint:fromView:]", [](fake::Call& call) { call.answer(call.point(0)); });
        fake::answer("+[NSEvent doubleClickInterval]", 0.4);
        fake::answer("-[NSPasteboard writeObjects:]", true);
        fake::answer("-[NSFileManager trashItemAtURL:resultingItemURL:error:]", true);
        launchLine([this, script] {
            hang(@[ @"/Users/test/a.pdf" ]);
            pass(2);
            point(720, 665 + 120);
            pass(0.3);
            ASSERT_FALSE(panel_.ignoresMouseEvents);
            fake::forgetCalls();
            script();
        });
    }
    NSView* view() { return panel_.contentView; }
    static NSEvent* event(double x, NSInteger clicks) {
        NSEvent* made = [[NSEvent alloc] init];
        fake::answer(made, "locationInWindow", CGPointMake(x, 120));
        fake::answer(made, "clickCount", clicks);
        return made;
    }
    void press(NSInteger clicks = 1) { [view() mouseDown:event(720, clicks)]; }
    void release(NSInteger clicks = 1) { [view() mouseUp:event(720, clicks)]; }
    NSUInteger hanging() { return [NSUserDefaults.standardUserDefaults arrayForKey:@"ClotheslinePaths"].count; }
};

TEST_F(CardHandsTest, aClickCopiesAndADoubleClickOpensInstead) {
    withCard([this] {
        press();
        release();
        pass(0.3);
        EXPECT_FALSE(fake::called("-[NSPasteboard writeObjects:]")) << "it may become a double click";
        pass(0.2);
        EXPECT_TRUE(fake::calledTimes(1, "-[NSPasteboard writeObjects:]"));
        fake::forgetCalls();
        press();
        release();
        press(2);
        release(2);
        pass(1);
        EXPECT_TRUE(fake::calledTimes(1, "-[NSWorkspace openURL:configuration:completionHandler:]"));
        EXPECT_FALSE(fake::called("-[NSPasteboard writeObjects:]"));
    });
}

TEST_F(CardHandsTest, aLongPressShowsThePreviewPanel) {
    withCard([this] {
        press();
        pass(0.4);
        EXPECT_FALSE(fake::called("-[QLPreviewPanel makeKeyAndOrderFront:]"));
        pass(0.1);
        EXPECT_TRUE(fake::calledInOrder({"-[NSApplication activateIgnoringOtherApps:] YES",
                                         "-[QLPreviewPanel updateController]", "-[QLPreviewPanel reloadData]",
                                         "-[QLPreviewPanel setCurrentPreviewItemIndex:] 0",
                                         "-[QLPreviewPanel makeKeyAndOrderFront:]"}));
        release();
        pass(1);
        EXPECT_FALSE(fake::called("-[NSPasteboard writeObjects:]"));
    });
}

TEST_F(CardHandsTest, theContextMenuMovesTheFileToTheTrash) {
    withCard([this] {
        std::vector<std::string> titles;
        fake::onCall("+[NSMenu popUpContextMenu:withEvent:forView:]", [&](fake::Call& call) {
            NSMenu* menu = call.object(0);
            for (NSMenuItem* item in menu.itemArray) {
                titles.push_back(item.separatorItem ? "-" : item.title.UTF8String);
                if (titles.back() == "移到废纸篓") {
                    fake::press(item);
                }
            }
        });
        [view() rightMouseDown:event(720, 1)];
        EXPECT_EQ(titles, (std::vector<std::string>{"复制", "打开", "快速查看", "在 Finder 中显示", "拷贝路径", "-",
                                                    "取下（文件保留）", "移到废纸篓", "取下左边全部", "取下右边全部"}));
        EXPECT_TRUE(fake::calledInOrder({"-[NSFileManager trashItemAtURL:resultingItemURL:error:]",
                                         "-[NSSound initWithContentsOfFile:byReference:]"}));
        pass(1);
        EXPECT_EQ(hanging(), 0u);
    });
}

TEST_F(CardHandsTest, aDragToTheTrashTrashesAndAnotherLeavesTheCard) {
    withCard([this] {
        const auto dragOut = [this](NSDragOperation done) {
            press();
            [view() mouseDragged:event(724, 1)];
            EXPECT_FALSE(fake::called("-[NSView beginDraggingSessionWithItems:event:source:]"))
                << "four points are a click";
            [view() mouseDragged:event(725, 1)];
            id<NSDraggingSource> source =
                fake::lastCall("-[NSView beginDraggingSessionWithItems:event:source:]").object(2);
            NSDraggingSession* session = [[NSDraggingSession alloc] init];
            EXPECT_EQ([source draggingSession:session
                          sourceOperationMaskForDraggingContext:NSDraggingContextWithinApplication],
                      NSDragOperationMove);
            EXPECT_EQ([source draggingSession:session
                          sourceOperationMaskForDraggingContext:NSDraggingContextOutsideApplication],
                      NSDragOperationCopy | NSDragOperationMove | NSDragOperationDelete);
            [source draggingSession:session endedAtPoint:NSZeroPoint operation:done];
            pass(1);
            fake::forgetCalls();
        };
        dragOut(NSDragOperationNone);
        dragOut(NSDragOperationCopy);
        EXPECT_EQ(hanging(), 1u);
        int trashed = 0;
        fake::onCall("-[NSFileManager trashItemAtURL:resultingItemURL:error:]", [&](fake::Call& call) {
            ++trashed;
            call.answer(true);
        });
        dragOut(NSDragOperationDelete);
        EXPECT_EQ(trashed, 1);
        EXPECT_EQ(hanging(), 0u);
    });
}

} // namespace

} // namespace rb
