#include "desktops/macos/PanelView.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/Menus.h"

#include <optional>
#include <utility>

namespace rb {

namespace {

class MacDraggingInfo final : public DraggingInfo {
public:
    MacDraggingInfo(id<NSDraggingInfo> info, NSView* view)
        : info_(info)
        , view_(view) {}

    Point location() const override { return pointFrom([view_ convertPoint:info_.draggingLocation fromView:nil]); }
    std::uint32_t sourceOperationMask() const override {
        return static_cast<std::uint32_t>(info_.draggingSourceOperationMask);
    }
    bool isFromThisProgram() const override { return info_.draggingSource != nil; }
    std::vector<std::string> files() const override {
        std::vector<std::string> files;
        for (NSURL* url in [info_.draggingPasteboard readObjectsForClasses:@[ NSURL.class ]
                                                                   options:@{
                                                                       NSPasteboardURLReadingFileURLsOnlyKey : @YES
                                                                   }]) {
            if (NSString* path = url.path) {
                files.push_back(utf8String(path));
            }
        }
        return files;
    }

private:
    id<NSDraggingInfo> info_;
    NSView* view_;
};

} // namespace

} // namespace rb

@implementation RBMacPanelView {
    NSEvent* _event;                       // the mouse event that is being told
    std::optional<rb::FileDrag> _outgoing; // the drag that began here
    NSInteger _stage;                      // of the pressure
}

- (rb::PanelMouseEvent)mouseEvent:(NSEvent*)event {
    const NSPoint location = [self convertPoint:event.locationInWindow fromView:nil];
    return {.location = rb::pointFrom(location),
            .clickCount = static_cast<int>(event.clickCount),
            .modifierFlags = static_cast<std::uint32_t>(event.modifierFlags)};
}

// The panel never is the key window, and its first click counts nevertheless.
- (BOOL)acceptsFirstMouse:(NSEvent*)event {
    return YES;
}

- (void)mouseDown:(NSEvent*)event {
    // The other way to ask for a context menu.
    if ((event.modifierFlags & NSEventModifierFlagControl) != 0) {
        [self rightMouseDown:event];
        return;
    }
    _stage = 0;
    if (self.input != nullptr) {
        _event = event;
        self.input->mouseDown([self mouseEvent:event]);
        _event = nil;
    }
}

- (void)mouseDragged:(NSEvent*)event {
    if (self.input != nullptr) {
        _event = event;
        self.input->mouseDragged([self mouseEvent:event]);
        _event = nil;
    }
}

- (void)mouseUp:(NSEvent*)event {
    if (self.input != nullptr) {
        self.input->mouseUp([self mouseEvent:event]);
    }
}

- (void)rightMouseDown:(NSEvent*)event {
    if (self.input != nullptr) {
        _event = event;
        self.input->rightMouseDown([self mouseEvent:event]);
        _event = nil;
    }
}

- (void)pressureChangeWithEvent:(NSEvent*)event {
    const NSInteger before = std::exchange(_stage, event.stage);
    if (self.input != nullptr && event.stage != before) {
        self.input->pressureChanged(static_cast<int>(event.stage));
    }
}

- (void)showMenu:(const std::shared_ptr<rb::Menu>&)menu closed:(const std::function<void()>&)closed {
    const auto told = closed; // the menu runs timers, which may take this panel away
    if (_event != nil) {
        [NSMenu popUpContextMenu:rb::nsMenu(menu) withEvent:_event forView:self];
    }
    told();
}

- (void)beginDrag:(const rb::FileDrag&)drag {
    if (_event == nil) {
        return;
    }
    NSDraggingItem* item =
        [[NSDraggingItem alloc] initWithPasteboardWriter:[NSURL fileURLWithPath:rb::nsString(drag.path)]];
    [item setDraggingFrame:rb::cgRect(drag.frame) contents:rb::nsImage(drag.picture)];
    _outgoing = drag;
    NSDraggingSession* session = [self beginDraggingSessionWithItems:@[ item ] event:_event source:self];
    session.animatesToStartingPositionsOnCancelOrFail = YES;
}

- (void)forgetDrag {
    _outgoing.reset();
}

- (NSDragOperation)draggingSession:(NSDraggingSession*)session
    sourceOperationMaskForDraggingContext:(NSDraggingContext)context {
    if (!_outgoing) {
        return NSDragOperationNone;
    }
    return context == NSDraggingContextWithinApplication ? _outgoing->operationsInside : _outgoing->operationsOutside;
}

- (void)draggingSession:(NSDraggingSession*)session endedAtPoint:(NSPoint)point operation:(NSDragOperation)operation {
    const auto drag = std::exchange(_outgoing, std::nullopt);
    if (drag && drag->ended) {
        drag->ended(static_cast<std::uint32_t>(operation));
    }
}

- (NSDragOperation)draggingEntered:(id<NSDraggingInfo>)sender {
    return [self draggingUpdated:sender];
}

- (NSDragOperation)draggingUpdated:(id<NSDraggingInfo>)sender {
    return self.input != nullptr ? self.input->dragUpdated(rb::MacDraggingInfo(sender, self)) : NSDragOperationNone;
}

- (void)draggingExited:(id<NSDraggingInfo>)sender {
    if (self.input != nullptr) {
        self.input->dragExited();
    }
}

- (BOOL)performDragOperation:(id<NSDraggingInfo>)sender {
    return self.input != nullptr && self.input->performDrop(rb::MacDraggingInfo(sender, self)) ? YES : NO;
}

@end
