#include "desktops/macos/Screens.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/Notifications.h"

#include <utility>

namespace rb {

namespace {

Screen screenFrom(NSScreen* screen) {
    NSNumber* number = screen.deviceDescription[@"NSScreenNumber"];
    return {.id = number.unsignedIntValue,
            .frame = rectFrom(screen.frame),
            .visibleFrame = rectFrom(screen.visibleFrame),
            .backingScaleFactor = screen.backingScaleFactor,
            .safeAreaTop = screen.safeAreaInsets.top,
            .localizedName = utf8String(screen.localizedName)};
}

} // namespace

std::vector<Screen> MacScreens::all() const {
    std::vector<Screen> screens;
    for (NSScreen* screen in NSScreen.screens) {
        screens.push_back(screenFrom(screen));
    }
    return screens;
}

std::optional<Screen> MacScreens::main() const {
    NSScreen* screen = NSScreen.mainScreen;
    return screen != nil ? std::optional(screenFrom(screen)) : std::nullopt;
}

Handle MacScreens::onChange(std::function<void()> changed) {
    return observeNotification(NSApplicationDidChangeScreenParametersNotification, std::move(changed));
}

} // namespace rb
