#include "desktops/macos/SessionLock.h"

#include "desktops/macos/Bridge.h"

namespace rb {

namespace {

// Starts a program without waiting for it.
void launch(NSString* path, NSArray<NSString*>* arguments, Log& log) {
    NSTask* task = [[NSTask alloc] init];
    task.executableURL = [NSURL fileURLWithPath:path];
    task.arguments = arguments;
    NSError* error = nil;
    if (![task launchAndReturnError:&error]) {
        log.write("could not start " + utf8String(path) + ": " + utf8String(error.localizedDescription));
    }
}

} // namespace

void MacSessionLock::startScreenSaver() {
    launch(@"/usr/bin/open", @[ @"-a", @"ScreenSaverEngine" ], log_);
}

void MacSessionLock::sleepDisplays() {
    launch(@"/usr/bin/pmset", @[ @"displaysleepnow" ], log_);
}

} // namespace rb
