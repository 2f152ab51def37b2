#include "desktops/macos/EventMonitors.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <utility>

namespace rb {

namespace {

// EventMask has the system's own bits.
NSEventMask eventMask(std::uint64_t mask) {
    return static_cast<NSEventMask>(mask);
}

} // namespace

Handle MacEventMonitors::addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) {
    const auto shared = std::make_shared<const std::function<void()>>(std::move(happened));
    id monitor = [NSEvent addGlobalMonitorForEventsMatchingMask:eventMask(mask)
                                                        handler:^(NSEvent*) {
                                                            const auto kept = shared; // it may drop its handle
                                                            (*kept)();
                                                        }];
    return Handle([monitor] {
        if (monitor != nil) {
            [NSEvent removeMonitor:monitor];
        }
    });
}

Handle MacEventMonitors::addLocalMonitor(std::uint64_t mask, std::function<void()> happened) {
    const auto shared = std::make_shared<const std::function<void()>>(std::move(happened));
    id monitor = [NSEvent addLocalMonitorForEventsMatchingMask:eventMask(mask)
                                                       handler:^NSEvent*(NSEvent* event) {
                                                           const auto kept = shared;
                                                           (*kept)();
                                                           return event;
                                                       }];
    return Handle([monitor] {
        if (monitor != nil) {
            [NSEvent removeMonitor:monitor];
        }
    });
}

} // namespace rb
