// Tests of the test frame itself: what it records, answers and calls back, and that it notices leaks and cycles.
#include "tests/macos/MacTest.h"
#include "tests/macos/frame/Subject.h"

#include <gtest/gtest-spi.h>

using namespace rb::fake;

namespace {

class FrameTest : public MacTest {};

TEST_F(FrameTest, RecordsCallsWithTheirArguments) {
    Subject* subject = [Subject new];
    [subject showItem];
    EXPECT_TRUE(calledInOrder({"-[NSStatusBar statusItemWithLength:] -1", "-[NSStatusBarButton setTarget:] <Subject>",
                               "-[NSStatusBarButton setAction:] @selector(clicked:)",
                               "-[NSMenu initWithTitle:] @\"晾衣绳\"", "-[NSStatusItem setMenu:] <NSMenu>"}));
    EXPECT_FALSE(called("-[NSStatusBar statusItemWithLength:] -2"));
    EXPECT_TRUE(
        calledTimes(1, "-[NSMenu addItemWithTitle:action:keyEquivalent:] @\"退出\", @selector(clicked:), @\"q\""));
}

TEST_F(FrameTest, ReadsStructuresFromRegistersAndStack) {
    NSPanel* panel = [[Subject new] makePanel];
    EXPECT_TRUE(called("-[NSPanel initWithContentRect:styleMask:backing:defer:] {{10, 20}, {300, 120}}, 128, 2, NO"));
    EXPECT_TRUE(called("-[NSWindow setLevel:] 25")) << "a superclass may name the call too";
    EXPECT_TRUE(called("-[CALayer setPosition:] {3.5, 4}"));
    EXPECT_TRUE(called("-[CALayer setTransform:] {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}"));
    CALayer* layer = panel.contentView.layer.sublayers.firstObject;
    EXPECT_EQ(layer.position.y, 4);
    EXPECT_EQ(layer.transform.m33, 1);
    EXPECT_EQ(panel.frame.size.width, 300);
    EXPECT_TRUE(panel.visible);
}

TEST_F(FrameTest, CallsOfTheTestAreNotRecorded) {
    NSMenu* menu = [[NSMenu alloc] initWithTitle:@"x"];
    menu.autoenablesItems = NO;
    EXPECT_TRUE(log().empty());
}

TEST_F(FrameTest, AnswersAreCannedPerNamePerReceiverAndOnce) {
    answer("CGMainDisplayID", 7);
    answer("CGDisplayBounds", CGRectMake(0, 0, 1440, 900));
    EXPECT_EQ([[Subject new] warpAndMeasure], 1440);
    EXPECT_TRUE(calledInOrder({"CGWarpMouseCursorPosition {7, 8}", "CGDisplayBounds 7"}));

    NSScreen* screen = [[NSScreen alloc] init];
    answer("-[NSScreen backingScaleFactor]", 2.0);
    answer(screen, "frame", NSMakeRect(1, 2, 3, 4));
    answerOnce("-[NSAlert runModal]", 1001);
    EXPECT_EQ(screen.backingScaleFactor, 2);
    EXPECT_EQ(screen.frame.size.height, 4);
    EXPECT_EQ([[[NSAlert alloc] init] runModal], 1001);
    EXPECT_EQ([[[NSAlert alloc] init] runModal], 0);
}

TEST_F(FrameTest, HooksSeeArgumentsAndFillOutParameters) {
    onCall("CGGetOnlineDisplayList", [](Call& call) {
        call.pointer<CGDirectDisplayID*>(1)[0] = 42;
        *call.pointer<std::uint32_t*>(2) = 1;
        call.answer(kCGErrorSuccess);
    });
    CGDirectDisplayID display = 0;
    std::uint32_t count = 0;
    EXPECT_EQ(CGGetOnlineDisplayList(4, &display, &count), kCGErrorSuccess);
    EXPECT_EQ(display, 42u);
    EXPECT_EQ(count, 1u);
}

TEST_F(FrameTest, TheSystemCallsBack) {
    Subject* subject = [Subject new];
    [subject showItem];
    press(subject.item.button);
    press(subject.item.menu.itemArray.firstObject);
    EXPECT_EQ(subject.clicks, 2);
    [subject.item.menu.delegate menuNeedsUpdate:subject.item.menu];
    EXPECT_EQ(subject.item.menu.numberOfItems, 0);

    [subject startTimer];
    [subject watchWake];
    [subject watchMouseWithCycle:NO];
    advance(1.6);
    EXPECT_EQ(subject.ticks, 3);
    [NSWorkspace.sharedWorkspace.notificationCenter postNotificationName:NSWorkspaceDidWakeNotification object:nil];
    EXPECT_EQ(subject.wakes, 1);
    const Call monitor = lastCall("+[NSEvent addGlobalMonitorForEventsMatchingMask:handler:]");
    monitor.block<void (^)(NSEvent*)>(1)(nil);
    EXPECT_EQ(subject.clicks, 3);

    [subject stopWatching];
    advance(5);
    [NSWorkspace.sharedWorkspace.notificationCenter postNotificationName:NSWorkspaceDidWakeNotification object:nil];
    EXPECT_EQ(subject.ticks, 3);
    EXPECT_EQ(subject.wakes, 1);
}

TEST_F(FrameTest, QueuesRunInOrderWhenTheTestLetsThem) {
    __block std::string order;
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 2 * NSEC_PER_SEC), dispatch_get_main_queue(), ^{ order += "c"; });
    dispatch_async(dispatch_get_main_queue(), ^{ order += "a"; });
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{ order += "b"; });
    EXPECT_EQ(order, "");
    runMainQueue();
    EXPECT_EQ(order, "ab");
    advance(2);
    EXPECT_EQ(order, "abc");
}

TEST_F(FrameTest, ValuesWorkForReal) {
    NSArray* words = [@"晾,衣,绳" componentsSeparatedByString:@","];
    EXPECT_EQ(words.count, 3u);
    EXPECT_STREQ([words componentsJoinedByString:@""].UTF8String, "晾衣绳");
    EXPECT_EQ(@"a😀".length, 3u);
    NSMutableDictionary* table = [@{@"one" : @1, @"half" : @0.5} mutableCopy];
    table[@"yes"] = @YES;
    double sum = 0;
    for (NSString* key in table)
        sum += [table[key] doubleValue];
    EXPECT_EQ(sum, 2.5);
    NSURL* url = [[NSURL fileURLWithPath:@"/a/b"] URLByAppendingPathComponent:@"c.txt"];
    NSString* text = [NSString stringWithFormat:@"%@ %d %.1f", url.path, 3, 0.5];
    EXPECT_STREQ(text.UTF8String, "/a/b/c.txt 3 0.5");
}

TEST_F(FrameTest, WeakReferencesEndWithTheObject) {
    __weak Subject* weak = nil;
    @autoreleasepool {
        Subject* subject = [Subject new];
        weak = subject;
        EXPECT_EQ(live("Subject"), 1);
    }
    EXPECT_EQ(weak, nil);
    EXPECT_EQ(live("Subject"), 0);
}

// The checks after a test, shown to fail when there is something to find.
class Careless : public MacTest {
public:
    void TestBody() override {}
    void finish() { TearDown(); }
};

void leaveCycle() {
    Careless test;
    Subject* subject = [Subject new];
    [subject watchMouseWithCycle:YES];
    subject = nil;
    test.finish();
}

void leaveOwnCycle() {
    Careless test;
    @autoreleasepool {
        Subject* subject = [Subject new];
        id captured = subject;
        subject.changed = ^{ (void)captured; };
    }
    test.finish();
}

void leakSystemObject() {
    Careless test;
    (void)CGColorSpaceCreateDeviceRGB();
    test.finish();
}

TEST(FrameCheck, FindsHandlersCyclesAndLeaks) {
    EXPECT_NONFATAL_FAILURE(leaveCycle(), "still alive after the test: 1 Subject");
    EXPECT_NONFATAL_FAILURE(leaveOwnCycle(), "still alive after the test: 1 Subject");
    EXPECT_NONFATAL_FAILURE(leakSystemObject(), "leaked: 1 RBFakeCoreObject");
}

} // namespace
