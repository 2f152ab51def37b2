#include "desktops/macos/WindowList.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

namespace rb {

std::optional<std::vector<int>> MacWindowList::layersOnScreen() const {
    NSArray<NSDictionary*>* windows = CFBridgingRelease(CGWindowListCopyWindowInfo(
        kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements, kCGNullWindowID));
    if (windows == nil) {
        return std::nullopt;
    }
    std::vector<int> layers;
    for (NSDictionary* window in windows) {
        NSNumber* layer = window[(__bridge NSString*)kCGWindowLayer];
        layers.push_back(layer.intValue);
    }
    return layers;
}

} // namespace rb
