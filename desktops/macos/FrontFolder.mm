#include "desktops/macos/FrontFolder.h"

#include "desktops/macos/Bridge.h"

namespace rb {

namespace {

NSString* const question =
    @"tell application \"Finder\"\n"
    @"  if (count of Finder windows) is 0 then return POSIX path of (path to desktop folder)\n"
    @"  return POSIX path of (target of front Finder window as alias)\n"
    @"end tell";

} // namespace

void MacFrontFolder::ask(std::function<void(const Answer&)> answer) {
    NSDictionary<NSString*, id>* error = nil;
    NSAppleScript* script = [[NSAppleScript alloc] initWithSource:question];
    NSString* path = [script executeAndReturnError:&error].stringValue;
    if (path.length > 0) {
        answer({.path = utf8String(path)});
        return;
    }
    id number = error[NSAppleScriptErrorNumber];
    id message = error[NSAppleScriptErrorMessage];
    answer({.errorCode = [number isKindOfClass:NSNumber.class] ? [number integerValue] : 0,
            .errorText = [message isKindOfClass:NSString.class] ? utf8String(message) : std::string()});
}

} // namespace rb
