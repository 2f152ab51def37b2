#pragma once

#include "platform/StatusBar.h"

#import <AppKit/AppKit.h>

namespace rb {

// A transient, animated NSPopover below a view that is in a window.
std::unique_ptr<Popover> showMacPopover(PopoverSpec spec, NSView* below);

} // namespace rb
