#include "desktops/macos/EventMonitors.h"
#include "desktops/macos/Pointer.h"
#include "desktops/macos/RandomSource.h"
#include "desktops/macos/Sounds.h"

#include "tests/macos/MacTest.h"

#include <algorithm>

namespace rb {

namespace {

using EventMonitorTest = fake::MacTest;
using PointerTest = fake::MacTest;
using SoundTest = fake::MacTest;
using RandomSourceTest = fake::MacTest;

constexpr std::uint64_t mouseDown = LeftMouseDownMask | RightMouseDownMask;

TEST_F(EventMonitorTest, bothWatchTheSystemsOwnEventsUntilTheirHandlesGo) {
    MacEventMonitors monitors;
    int global = 0;
    int local = 0;
    Handle globalHandle = monitors.addGlobalMonitor(mouseDown, [&] { ++global; });
    Handle localHandle = monitors.addLocalMonitor(mouseDown | MouseMovedMask, [&] { ++local; });
    const auto globalCall = fake::lastCall("+[NSEvent addGlobalMonitorForEventsMatchingMask:handler:]");
    const auto localCall = fake::lastCall("+[NSEvent addLocalMonitorForEventsMatchingMask:handler:]");
    EXPECT_EQ(static_cast<NSEventMask>(globalCall.integer(0)), NSEventMaskLeftMouseDown | NSEventMaskRightMouseDown);
    EXPECT_EQ(static_cast<NSEventMask>(localCall.integer(0)),
              NSEventMaskLeftMouseDown | NSEventMaskRightMouseDown | NSEventMaskMouseMoved);

    NSEvent* event = [[NSEvent alloc] init];
    globalCall.block<void (^)(NSEvent*)>(1)(event);
    EXPECT_EQ(localCall.block<NSEvent* (^)(NSEvent*)>(1)(event), event) << "the event goes on";
    EXPECT_EQ(global, 1);
    EXPECT_EQ(local, 1);

    EXPECT_TRUE(fake::calls("+[NSEvent removeMonitor:]").empty());
    globalHandle.reset();
    ASSERT_EQ(fake::calls("+[NSEvent removeMonitor:]").size(), 1u);
    const long removed = fake::lastCall("+[NSEvent removeMonitor:]").integer(0);
    localHandle.reset();
    ASSERT_EQ(fake::calls("+[NSEvent removeMonitor:]").size(), 2u);
    EXPECT_NE(fake::lastCall("+[NSEvent removeMonitor:]").integer(0), removed) << "each its own";
}

TEST_F(EventMonitorTest, aHandleMayGoInItsOwnCallback) {
    MacEventMonitors monitors;
    const auto kept = std::make_shared<int>(0);
    Handle handle;
    handle = monitors.addLocalMonitor(mouseDown, [&handle, kept] {
        handle.reset();
        ++*kept; // still there
    });
    auto call = fake::lastCall("+[NSEvent addLocalMonitorForEventsMatchingMask:handler:]");
    call.block<NSEvent* (^)(NSEvent*)>(1)(nil);
    EXPECT_EQ(*kept, 1);
    EXPECT_EQ(fake::calls("+[NSEvent removeMonitor:]").size(), 1u);
}

TEST_F(EventMonitorTest, aRefusedMonitorIsNotRemoved) {
    fake::answer("+[NSEvent addGlobalMonitorForEventsMatchingMask:handler:]", id(nil));
    MacEventMonitors monitors;
    EXPECT_FALSE(monitors.addGlobalMonitor(mouseDown, [] {}));
    EXPECT_TRUE(fake::calls("+[NSEvent removeMonitor:]").empty());
}

TEST_F(PointerTest, readsPlaceAndButtons) {
    fake::answer("+[NSEvent mouseLocation]", CGPointMake(700.5, 900));
    fake::answer("+[NSEvent pressedMouseButtons]", 5);
    MacPointer pointer;
    EXPECT_EQ(pointer.location(), (Point{700.5, 900}));
    EXPECT_EQ(pointer.pressedButtons(), 5u);
}

TEST_F(SoundTest, eachPlayIsACopyThatLivesUntilItIsOver) {
    fake::answer("+[NSSound soundNamed:]", [[NSSound alloc] init]);
    fake::answer("-[NSSound play]", true);
    MacSounds sounds;
    sounds.play("Tink", 0.35);
    sounds.play("Tink", 0.25);
    EXPECT_EQ(fake::lastCall("+[NSSound soundNamed:]").string(0), "Tink");
    const auto volumes = fake::calls("-[NSSound setVolume:]");
    ASSERT_EQ(volumes.size(), 2u);
    EXPECT_FLOAT_EQ(static_cast<float>(volumes[0].real(0)), 0.35f);
    EXPECT_FLOAT_EQ(static_cast<float>(volumes[1].real(0)), 0.25f);
    @autoreleasepool {
        const auto played = fake::calls("-[NSSound play]");
        ASSERT_EQ(played.size(), 2u);
        NSSound* first = played[0].receiver();
        ASSERT_NE(first, nil) << "nobody holds what plays";
        EXPECT_NE(first, played[1].receiver());
        [first.delegate sound:first didFinishPlaying:YES];
        fake::runMainQueue();
    }
    const auto played = fake::calls("-[NSSound play]");
    EXPECT_EQ(played[0].receiver(), nil) << "it is over";
    EXPECT_NE(played[1].receiver(), nil);
}

TEST_F(SoundTest, whatCannotBePlayedIsSilent) {
    fake::answer("+[NSSound soundNamed:]", [[NSSound alloc] init]);
    fake::answer("-[NSSound play]", false);
    MacSounds sounds;
    @autoreleasepool {
        sounds.play("Pop", 0.25);
    }
    EXPECT_EQ(fake::lastCall("-[NSSound play]").receiver(), nil) << "nothing will ever tell its end";
    fake::answer("+[NSSound soundNamed:]", id(nil));
    sounds.play("no such sound", 1);
    EXPECT_EQ(fake::calls("-[NSSound play]").size(), 1u);
}

TEST_F(RandomSourceTest, drawsFromBothEndsOfTheRange) {
    MacRandomSource random;
    int lowest = 10000;
    int highest = 0;
    for (int i = 0; i < 2000; ++i) {
        const int value = random.upTo10000();
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
    }
    EXPECT_GE(lowest, 0);
    EXPECT_LT(lowest, 1000);
    EXPECT_GT(highest, 9000);
    EXPECT_LE(highest, 10000);
}

} // namespace

} // namespace rb
