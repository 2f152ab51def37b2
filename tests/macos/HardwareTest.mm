#include "desktops/macos/Hardware.h"

#include "tests/macos/MacTest.h"

#import <AppKit/AppKit.h>
#import <IOKit/IOKitLib.h>

namespace rb {

namespace {

class HardwareTest : public fake::MacTest {
protected:
    unsigned addDevice() { return fake::addRegistryEntry("IOUSBHostDevice", "device", @{}); }
    static void change(const char* kind, unsigned device) {
        fake::changeDevice(kind, device);
        fake::runMainQueue();
    }

    MacHardware hardware_;
};

TEST_F(HardwareTest, DevicesThatComeAndGoAreTold) {
    const unsigned present = addDevice();
    int changes = 0;
    Handle watch = hardware_.onUSBChange([&] { ++changes; });
    fake::runMainQueue();
    EXPECT_EQ(changes, 0) << "what was there before is no news";
    for (int round = 1; round <= 2; ++round) {
        change("IOServiceFirstMatch", addDevice());
        EXPECT_EQ(changes, 2 * round - 1) << "armed anew after each";
        change("IOServiceTerminate", present);
        EXPECT_EQ(changes, 2 * round);
    }
    change("IOServiceTerminate", fake::addRegistryEntry("IOBlockStorageDevice", "disk", @{}));
    EXPECT_EQ(changes, 4);
    fake::changeDevice("IOServiceTerminate", present); // on its way when the watch ends
    watch.reset();
    fake::runMainQueue();
    EXPECT_EQ(changes, 4);
    EXPECT_TRUE(fake::calledTimes(1, "IONotificationPortDestroy"));
}

TEST_F(HardwareTest, AWatchMayEndItselfWhileItIsTold) {
    auto kept = std::make_shared<int>(0);
    Handle watch;
    watch = hardware_.onUSBChange([&watch, kept] {
        watch.reset();
        ++*kept; // the callback outlives its watch
    });
    change("IOServiceFirstMatch", addDevice());
    EXPECT_EQ(*kept, 1);
    EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(HardwareTest, WakingIsToldUntilTheHandleGoes) {
    int wakes = 0;
    Handle handle = hardware_.onWake([&] { ++wakes; });
    const auto wake = [] {
        [NSWorkspace.sharedWorkspace.notificationCenter postNotificationName:NSWorkspaceDidWakeNotification object:nil];
    };
    wake();
    EXPECT_EQ(wakes, 1);
    handle.reset();
    wake();
    EXPECT_EQ(wakes, 1);
}

} // namespace

} // namespace rb
