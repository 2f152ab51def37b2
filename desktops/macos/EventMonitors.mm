#include "desktops/macos/EventMonitors.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <utility>

namespace rb {

namespace {

using Happened = std::shared_ptr<const std::function<void()>>;

// Nil when the system refused to monitor.
Handle removal(id monitor) {
    if (monitor == nil) {
        return {};
    }
    return Handle([monitor] { [NSEvent removeMonitor:monitor]; });
}

} // namespace

// The masks have the system's own bits.
Handle MacEventMonitors::addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) {
    const Happened shared = std::make_shared<const std::function<void()>>(std::move(happened));
    return removal([NSEvent addGlobalMonitorForEventsMatchingMask:static_cast<NSEventMask>(mask)
                                                          handler:^(NSEvent*) {
                                                              const Happened kept = shared; // it may drop its handle
                                                              (*kept)();
                                                          }]);
}

Handle MacEventMonitors::addLocalMonitor(std::uint64_t mask, std::function<void()> happened) {
    const Happened shared = std::make_shared<const std::function<void()>>(std::move(happened));
    return removal([NSEvent addLocalMonitorForEventsMatchingMask:static_cast<NSEventMask>(mask)
                                                         handler:^NSEvent*(NSEvent* event) {
                                                             const Happened kept = shared;
                                                             (*kept)();
                                                             return event;
                                                         }]);
}

} // namespace rb
