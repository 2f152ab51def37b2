// expect: only available on macOS 14.0 or newer
#import <AppKit/AppKit.h>

void activate() {
    [NSApp activate];
}
