#pragma once

#include "motion/Layer.h"

#import <AppKit/AppKit.h>

#include <memory>

// A layer-backed view that shows a tree of layers and keeps the root's bounds equal to its own.
@interface RBMacLayerView : NSView
// Null shows nothing.
- (void)showLayer:(const std::shared_ptr<rb::Layer>&)layer;
// Carries over what changed without waiting for the end of the turn.
- (void)flush;
@end
