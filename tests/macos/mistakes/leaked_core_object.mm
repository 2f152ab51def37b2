// expect-analysis: Potential leak
#import <CoreGraphics/CoreGraphics.h>

bool hasColors() {
    CGColorSpaceRef space = CGColorSpaceCreateDeviceRGB();
    return space != nullptr;
}
