#include "desktops/macos/Hardware.h"

#import <AppKit/AppKit.h>
#import <IOKit/IOKitLib.h>

#include <memory>
#include <utility>

namespace rb {

namespace {

// One observation of USB devices; lives until its handle goes.
struct USBWatch {
    std::function<void()> changed;
    IONotificationPortRef notificationPort = nullptr;
    io_iterator_t addedDevices = 0;
    io_iterator_t removedDevices = 0;

    ~USBWatch() {
        // No notification comes after this; the iterators would still hold what they found.
        IONotificationPortDestroy(notificationPort);
        for (const io_iterator_t iterator : {addedDevices, removedDevices}) {
            if (iterator != 0) {
                IOObjectRelease(iterator);
            }
        }
    }
};

// An iterator tells of the next change only after it was read to its end.
void drain(io_iterator_t iterator) {
    for (io_object_t device = IOIteratorNext(iterator); device != 0; device = IOIteratorNext(iterator)) {
        IOObjectRelease(device);
    }
}

void RBUSBChanged(void* refcon, io_iterator_t iterator) {
    drain(iterator);
    const auto changed = static_cast<USBWatch*>(refcon)->changed; // it may end the watch
    changed();
}

} // namespace

Handle MacHardware::onWake(std::function<void()> woke) {
    const auto shared = std::make_shared<const std::function<void()>>(std::move(woke));
    NSNotificationCenter* center = NSWorkspace.sharedWorkspace.notificationCenter;
    id token = [center addObserverForName:NSWorkspaceDidWakeNotification
                                   object:nil
                                    queue:nil
                               usingBlock:^(NSNotification*) {
                                   const auto kept = shared;
                                   (*kept)();
                               }];
    return Handle([center, token] { [center removeObserver:token]; });
}

Handle MacHardware::onUSBChange(std::function<void()> changed) {
    IONotificationPortRef port = IONotificationPortCreate(kIOMainPortDefault);
    if (port == nullptr) {
        return {};
    }
    IONotificationPortSetDispatchQueue(port, dispatch_get_main_queue());
    const auto watch = std::make_shared<USBWatch>();
    watch->changed = std::move(changed);
    watch->notificationPort = port;
    IOServiceAddMatchingNotification(port, kIOFirstMatchNotification, IOServiceMatching("IOUSBHostDevice"),
                                     RBUSBChanged, watch.get(), &watch->addedDevices);
    IOServiceAddMatchingNotification(port, kIOTerminatedNotification, IOServiceMatching("IOUSBHostDevice"),
                                     RBUSBChanged, watch.get(), &watch->removedDevices);
    drain(watch->addedDevices);
    drain(watch->removedDevices);
    return Handle([watch] {});
}

bool MacHardware::tellsOfConnections() const {
#if defined(__arm64__)
    if (@available(macOS 14.0, *)) {
        return true;
    }
#endif
    return false;
}

} // namespace rb
