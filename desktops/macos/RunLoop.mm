#include "desktops/macos/RunLoop.h"

#import <Foundation/Foundation.h>
#import <QuartzCore/QuartzCore.h>

#include <memory>
#include <utility>

namespace rb {

namespace {

// Common modes: the timer fires while a menu is open, the mouse is tracked or an alert is up, too.
Handle schedule(double interval, double tolerance, bool repeats, std::function<void()> work) {
    const auto shared = std::make_shared<const std::function<void()>>(std::move(work));
    NSTimer* timer = [NSTimer timerWithTimeInterval:interval
                                            repeats:repeats ? YES : NO
                                              block:^(NSTimer*) {
                                                  // The work may drop its handle, and with it the timer and this block.
                                                  const auto kept = shared;
                                                  (*kept)();
                                              }];
    timer.tolerance = tolerance;
    [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
    // The run loop owns the timer while it is to fire; a spent one needn't wait for its handle.
    __weak NSTimer* weakTimer = timer;
    return Handle([weakTimer] { [weakTimer invalidate]; });
}

} // namespace

double MacRunLoop::now() const {
    return CACurrentMediaTime();
}

double MacRunLoop::wallClock() const {
    return NSDate.date.timeIntervalSince1970;
}

void MacRunLoop::post(std::function<void()> work) {
    dispatch_async(dispatch_get_main_queue(), ^{ work(); });
}

Handle MacRunLoop::after(double delay, std::function<void()> work) {
    return schedule(delay, 0, false, std::move(work));
}

Handle MacRunLoop::every(double interval, double tolerance, std::function<void()> work) {
    return schedule(interval, tolerance, true, std::move(work));
}

void MacRunLoop::background(QualityOfService quality, std::function<void()> work) {
    const auto qosClass = quality == QualityOfService::UserInitiated ? QOS_CLASS_USER_INITIATED : QOS_CLASS_UTILITY;
    dispatch_async(dispatch_get_global_queue(qosClass, 0), ^{
        @autoreleasepool {
            work();
        }
    });
}

} // namespace rb
