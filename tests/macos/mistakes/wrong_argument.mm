// expect: incompatible pointer types
#import <AppKit/AppKit.h>

void name(NSWindow* window, NSImage* image) {
    window.title = image;
}
