#include "desktops/macos/DragPasteboard.h"

#include "desktops/macos/Bridge.h"

#import <AppKit/AppKit.h>

namespace rb {

std::int64_t MacDragPasteboard::changeCount() const {
    return [NSPasteboard pasteboardWithName:NSPasteboardNameDrag].changeCount;
}

std::vector<std::string> MacDragPasteboard::types() const {
    std::vector<std::string> types;
    for (NSPasteboardType type in [NSPasteboard pasteboardWithName:NSPasteboardNameDrag].types) {
        types.push_back(utf8String(type));
    }
    return types;
}

} // namespace rb
