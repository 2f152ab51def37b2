#pragma once

#include "platform/Menu.h"

#import <AppKit/AppKit.h>

#include <memory>

namespace rb {

// A menu that shows the product's. It reads the items anew each time before it opens, asks needsUpdate first, and hosts
// the menus of submenu items in the same way. Owns all it needs; nil for null.
NSMenu* nsMenu(const std::shared_ptr<Menu>& menu);

} // namespace rb
