#pragma once

#include "desktops/macos/LayerView.h"
#include "platform/Panels.h"

#include <functional>
#include <memory>

// The content of a panel: its layers, and the mouse and drags over it for the panel's input.
@interface RBMacPanelView : RBMacLayerView <NSDraggingSource>
// Null for nobody; not owned.
@property(nonatomic) rb::PanelInput* input;
// For the press that is being told, as AppKit asks for its event.
- (void)beginDrag:(const rb::FileDrag&)drag;
// The end of the drag is told to nobody any more.
- (void)forgetDrag;
- (void)showMenu:(const std::shared_ptr<rb::Menu>&)menu closed:(const std::function<void()>&)closed;
@end
