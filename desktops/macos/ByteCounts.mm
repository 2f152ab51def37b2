#include "desktops/macos/ByteCounts.h"

#include "desktops/macos/Bridge.h"

#import <Foundation/Foundation.h>

namespace rb {

std::string MacByteCounts::fileStyle(std::int64_t bytes) const {
    return utf8String([NSByteCountFormatter stringFromByteCount:bytes countStyle:NSByteCountFormatterCountStyleFile]);
}

} // namespace rb
