#include "desktops/macos/RunLoop.h"

#include "tests/macos/MacTest.h"

#import <QuartzCore/QuartzCore.h>

namespace rb {

namespace {

class RunLoopTest : public fake::MacTest {
protected:
    MacRunLoop loop_;
};

TEST_F(RunLoopTest, timersAreOnTheMainRunLoopInTheCommonModes) {
    int fired = 0;
    const Handle timer = loop_.every(0.25, 0.005, [&] { ++fired; });
    const auto added = fake::lastCall("-[NSRunLoop addTimer:forMode:]");
    EXPECT_EQ(added.receiver(), NSRunLoop.mainRunLoop);
    EXPECT_EQ(added.object(1), NSRunLoopCommonModes);
    NSTimer* native = added.object(0);
    EXPECT_EQ(native.tolerance, 0.005);
    fake::advance(1.01);
    EXPECT_EQ(fired, 4);
}

TEST_F(RunLoopTest, aTimerEndsWithItsHandleAlsoInsideItself) {
    int fired = 0;
    Handle timer = loop_.every(0.1, 0, [&] {
        ++fired;
        timer.reset();
    });
    Handle other = loop_.after(0.1, [&] { ++fired; });
    other = {};
    fake::advance(1);
    EXPECT_EQ(fired, 1);
}

TEST_F(RunLoopTest, aSpentTimerIsFreedBeforeItsHandle) {
    const auto held = std::make_shared<int>(0);
    Handle timer = loop_.after(0.1, [held] {});
    @autoreleasepool {
        fake::advance(1);
        fake::forgetCalls();
    }
    EXPECT_EQ(held.use_count(), 1);
    timer.reset();
}

TEST_F(RunLoopTest, postedWorkRunsInALaterTurnAndInOrder) {
    std::string order;
    loop_.post([&] {
        order += "a";
        loop_.post([&] { order += "c"; });
    });
    loop_.post([&] { order += "b"; });
    EXPECT_EQ(order, "");
    fake::runMainQueue();
    fake::runMainQueue();
    EXPECT_EQ(order, "abc");
}

TEST_F(RunLoopTest, backgroundWorkRunsLater) {
    bool ran = false;
    loop_.background(QualityOfService::Utility, [&] { ran = true; });
    EXPECT_FALSE(ran);
    fake::advance(0);
    EXPECT_TRUE(ran);
}

TEST_F(RunLoopTest, theMediaClockIsCoreAnimations) {
    EXPECT_EQ(loop_.now(), CACurrentMediaTime());
    fake::advance(3);
    EXPECT_EQ(loop_.now(), fake::now());
}

} // namespace

} // namespace rb
