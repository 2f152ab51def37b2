#pragma once

#include "platform/View.h"

#import <AppKit/AppKit.h>

// The area around one child: shows the product's layer behind it and hands keys, mouse and focus on to the product.
// The child itself is a subview that its owner places.
@interface RBMacBoxView : NSView
// Replaces what the area does; the child in it doesn't matter here.
- (void)takeOver:(const rb::BoxView&)box;
@end
