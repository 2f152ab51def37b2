#include "desktops/macos/Displays.h"

#include "desktops/macos/Bridge.h"

#import <AppKit/AppKit.h>
#import <CoreGraphics/CoreGraphics.h>

#include <utility>

namespace rb {

namespace {

DisplayMode modeFrom(CGDisplayModeRef mode) {
    return {.modeID = CGDisplayModeGetIODisplayModeID(mode),
            .width = CGDisplayModeGetWidth(mode),
            .height = CGDisplayModeGetHeight(mode),
            .pixelWidth = CGDisplayModeGetPixelWidth(mode),
            .pixelHeight = CGDisplayModeGetPixelHeight(mode),
            .refreshRate = CGDisplayModeGetRefreshRate(mode),
            .usableForDesktop = CGDisplayModeIsUsableForDesktopGUI(mode)};
}

std::vector<DisplayMode> modesOf(CGDirectDisplayID display) {
    std::vector<DisplayMode> modes;
    NSDictionary* options = @{(__bridge NSString*)kCGDisplayShowDuplicateLowResolutionModes : @YES};
    CFArrayRef list = CGDisplayCopyAllDisplayModes(display, (__bridge CFDictionaryRef)options);
    if (list == nullptr) {
        return modes;
    }
    for (CFIndex index = 0; index < CFArrayGetCount(list); ++index) {
        auto* mode = static_cast<CGDisplayModeRef>(const_cast<void*>(CFArrayGetValueAtIndex(list, index)));
        modes.push_back(modeFrom(mode));
    }
    CFRelease(list);
    return modes;
}

ConnectedDisplay describe(CGDirectDisplayID display, const std::string& name) {
    ConnectedDisplay connected{.identity = {.id = display,
                                            .vendor = CGDisplayVendorNumber(display),
                                            .model = CGDisplayModelNumber(display),
                                            .serial = CGDisplaySerialNumber(display)},
                               .name = name,
                               .main = display == CGMainDisplayID(),
                               .builtin = CGDisplayIsBuiltin(display) != 0,
                               .modes = modesOf(display)};
    if (CGDisplayModeRef mode = CGDisplayCopyDisplayMode(display)) {
        connected.currentMode = modeFrom(mode);
        CGDisplayModeRelease(mode);
    }
    return connected;
}

} // namespace

std::vector<ConnectedDisplay> MacDisplays::all() const {
    std::vector<ConnectedDisplay> displays;
    for (NSScreen* screen in NSScreen.screens) {
        NSNumber* number = screen.deviceDescription[@"NSScreenNumber"];
        if (number != nil) {
            displays.push_back(describe(number.unsignedIntValue, utf8String(screen.localizedName)));
        }
    }
    return displays;
}

std::optional<ConnectedDisplay> MacDisplays::display(std::uint32_t id) const {
    ConnectedDisplay connected = describe(id, "");
    return connected.currentMode ? std::optional(std::move(connected)) : std::nullopt;
}

} // namespace rb
