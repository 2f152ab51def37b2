#include "desktops/macos/FullScreenSpaces.h"

#import <ColorSync/ColorSync.h>
#import <Foundation/Foundation.h>

#include <dlfcn.h>

namespace rb {

namespace {

NSString* uuidOf(std::uint32_t displayId) {
    CFUUIDRef uuid = CGDisplayCreateUUIDFromDisplayID(displayId);
    if (uuid == nullptr) {
        return nil;
    }
    NSString* text = CFBridgingRelease(CFUUIDCreateString(nullptr, uuid));
    CFRelease(uuid);
    return text;
}

// The entry of the display; with a single entry that one, whatever it is called.
NSDictionary* entryOf(std::uint32_t displayId, NSArray* displays) {
    for (id entry in displays) {
        if (![entry isKindOfClass:NSDictionary.class]) {
            return nil;
        }
    }
    if (displays.count == 1) {
        return displays.firstObject;
    }
    NSString* uuid = uuidOf(displayId);
    for (NSDictionary* entry in displays) {
        if (uuid != nil && [entry[@"Display Identifier"] isEqual:uuid]) {
            return entry;
        }
    }
    return nil;
}

} // namespace

const FullScreenSpaces::WindowServer& FullScreenSpaces::windowServer() const {
    if (!windowServer_) {
        windowServer_ = {
            reinterpret_cast<MainConnection>(dlsym(RTLD_DEFAULT, "CGSMainConnectionID")),
            reinterpret_cast<CopyDisplaySpaces>(dlsym(RTLD_DEFAULT, "CGSCopyManagedDisplaySpaces")),
        };
    }
    return *windowServer_;
}

bool FullScreenSpaces::isShownOn(std::uint32_t displayId) const {
    constexpr int fullScreenType = 4;
    const WindowServer& server = windowServer();
    if (server.mainConnection == nullptr || server.copyDisplaySpaces == nullptr) {
        return false;
    }
    id displays = CFBridgingRelease(server.copyDisplaySpaces(server.mainConnection()));
    if (![displays isKindOfClass:NSArray.class]) {
        return false;
    }
    id space = entryOf(displayId, displays)[@"Current Space"];
    if (![space isKindOfClass:NSDictionary.class]) {
        return false;
    }
    id type = space[@"type"];
    return [type isKindOfClass:NSNumber.class] && [type intValue] == fullScreenType;
}

} // namespace rb
