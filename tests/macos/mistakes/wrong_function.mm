// expect: no matching function for call to 'CGDisplayBounds'
#import <CoreGraphics/CoreGraphics.h>

CGRect bounds() {
    return CGDisplayBounds(CGMainDisplayID(), 1);
}
