#include "desktops/macos/BoxView.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/LayerView.h"

// Each callback is copied before it is called, because it may render the window anew and thereby replace it, or even
// destroy this view: nothing of it is touched afterwards.
@implementation RBMacBoxView {
    rb::BoxView _box;
    RBMacLayerView* _background;
}

- (instancetype)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    if (self != nil) {
        self.wantsLayer = YES;
        self.layerContentsRedrawPolicy = NSViewLayerContentsRedrawOnSetNeedsDisplay;
        _background = [[RBMacLayerView alloc] initWithFrame:self.bounds];
        _background.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
        [self addSubview:_background];
    }
    return self;
}

- (void)takeOver:(const rb::BoxView&)box {
    _box = box;
    _box.child.clear();
    [_background showLayer:_box.layer];
    [self updateTrackingAreas];
}

- (BOOL)acceptsFirstResponder {
    return _box.acceptsFirstResponder ? YES : NO;
}

- (BOOL)becomeFirstResponder {
    const BOOL accepted = [super becomeFirstResponder];
    const auto becameFirstResponder = _box.becameFirstResponder;
    if (becameFirstResponder) {
        becameFirstResponder();
    }
    return accepted;
}

- (BOOL)resignFirstResponder {
    const BOOL accepted = [super resignFirstResponder];
    const auto resignedFirstResponder = _box.resignedFirstResponder;
    if (resignedFirstResponder) {
        resignedFirstResponder();
    }
    return accepted;
}

- (void)keyDown:(NSEvent*)event {
    const auto keyDown = _box.keyDown;
    if (!keyDown) {
        [super keyDown:event];
        return;
    }
    keyDown({.keyCode = event.keyCode,
             .modifierFlags = static_cast<std::uint32_t>(event.modifierFlags),
             .charactersIgnoringModifiers = rb::utf8String(event.charactersIgnoringModifiers)});
}

- (void)mouseDown:(NSEvent*)event {
    const auto mouseDown = _box.mouseDown;
    RBMacBoxView* kept = self;
    if (!mouseDown) {
        [super mouseDown:event];
    } else if (mouseDown()) {
        [kept.window makeFirstResponder:kept];
    }
}

- (void)mouseEntered:(NSEvent*)event {
    const auto mouseEntered = _box.mouseEntered;
    if (mouseEntered) {
        mouseEntered();
    }
}

- (void)mouseExited:(NSEvent*)event {
    const auto mouseExited = _box.mouseExited;
    if (mouseExited) {
        mouseExited();
    }
}

- (void)updateTrackingAreas {
    [super updateTrackingAreas];
    for (NSTrackingArea* area in self.trackingAreas) {
        [self removeTrackingArea:area];
    }
    if (_box.mouseEntered || _box.mouseExited) {
        const NSTrackingAreaOptions options =
            NSTrackingMouseEnteredAndExited | NSTrackingActiveInActiveApp | NSTrackingInVisibleRect;
        // In the visible rectangle: the given one doesn't count.
        [self addTrackingArea:[[NSTrackingArea alloc] initWithRect:NSZeroRect options:options owner:self userInfo:nil]];
    }
}

- (BOOL)wantsUpdateLayer {
    return YES;
}

- (void)updateLayer {
    const auto updateLayer = _box.updateLayer;
    if (updateLayer) {
        updateLayer();
    }
}

- (void)viewDidChangeEffectiveAppearance {
    [super viewDidChangeEffectiveAppearance];
    self.needsDisplay = YES;
}

@end
