#include "desktops/macos/ScreenshotPreferences.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/PropertyLists.h"
#include "platform/Log.h"

#include <CoreFoundation/CoreFoundation.h>

namespace rb {

namespace {

CFStringRef domain() {
    return CFSTR("com.apple.screencapture");
}

} // namespace

void MacScreenshotPreferences::synchronize() {
    // First what the user defaults hold: the user's own settings are among it.
    CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
    if (CFPreferencesAppSynchronize(domain()) == 0) {
        log_.write("cannot store the screenshot settings");
    }
}

std::optional<PropertyValue> MacScreenshotPreferences::value(const std::string& key) const {
    return propertyValue(CFBridgingRelease(CFPreferencesCopyAppValue((__bridge CFStringRef)nsString(key), domain())));
}

void MacScreenshotPreferences::setValue(const std::string& key, std::optional<PropertyValue> value) {
    id object = value ? propertyList(*value) : nil;
    CFPreferencesSetAppValue((__bridge CFStringRef)nsString(key), (__bridge CFPropertyListRef)object, domain());
}

std::string MacScreenshotPreferences::ownFolder() const {
    NSArray<NSURL*>* found = [NSFileManager.defaultManager URLsForDirectory:NSApplicationSupportDirectory
                                                                  inDomains:NSUserDomainMask];
    NSURL* support = found.firstObject;
    const std::string base =
        support != nil ? utf8String(support.path) : utf8String(NSHomeDirectory()) + "/Library/Application Support";
    return base + "/Rook Bay/Screenshots";
}

bool MacScreenshotPreferences::makeOwnFolder() {
    NSURL* folder = [NSURL fileURLWithPath:nsString(ownFolder()) isDirectory:YES];
    return [NSFileManager.defaultManager createDirectoryAtURL:folder
                                  withIntermediateDirectories:YES
                                                   attributes:@{
                                                       NSFilePosixPermissions : @0700
                                                   }
                                                        error:nil] != NO;
}

} // namespace rb
