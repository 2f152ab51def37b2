#pragma once

#include "platform/Handle.h"

#import <Foundation/Foundation.h>

#include <functional>

namespace rb {

// Tells each posting of a notification to the default centre, whoever posts it, on the posting thread (AppKit's own
// come on the main thread).
Handle observeNotification(NSNotificationName name, std::function<void()> posted);

} // namespace rb
