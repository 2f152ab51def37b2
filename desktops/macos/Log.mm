#include "desktops/macos/Log.h"

#include "desktops/macos/Bridge.h"

#import <Foundation/Foundation.h>

namespace rb {

void MacLog::write(const std::string& line) {
    // The line is an argument, never the format, so a percent sign in it stays one.
    NSLog(@"Rook Bay: %@", nsString(line));
}

} // namespace rb
