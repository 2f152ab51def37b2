// Hand-written behaviour of the system classes whose answers code depends on: what holds what, and what was posted.
// It is bookkeeping, not AppKit: nothing is drawn, laid out or animated. Here the application, views and windows.
#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>

#include "tests/macos/runtime/Properties.h"

using namespace rb::fake;

extern "C" NSApplication* NSApp;
NSApplication* NSApp;

@implementation NSApplication
+ (NSApplication*)sharedApplication {
    if (!NSApp) {
        NSApp = [[NSApplication alloc] init];
        static bool once = (onReset([] { NSApp = nil; }), true);
        (void)once;
    }
    return NSApp;
}
@end

@implementation NSStatusItem
- (NSStatusBarButton*)button {
    if (!property(self, "button"))
        setProperty(self, "button", [[NSStatusBarButton alloc] init]);
    return property(self, "button");
}
@end

@implementation NSView
- (instancetype)initWithFrame:(NSRect)frame {
    setFrame(self, frame);
    return self;
}
- (void)setFrame:(NSRect)frame {
    setFrame(self, frame);
}
- (void)setFrameSize:(NSSize)size {
    const NSRect frame = self.frame;
    setFrame(self, NSMakeRect(frame.origin.x, frame.origin.y, size.width, size.height));
}
- (void)setFrameOrigin:(NSPoint)origin {
    const NSRect frame = self.frame;
    setFrame(self, NSMakeRect(origin.x, origin.y, frame.size.width, frame.size.height));
}
- (void)addSubview:(NSView*)view {
    [view removeFromSuperview];
    [list(self, "subviews") addObject:view];
    setParent(view, "superviewReference", self);
}
- (void)addSubview:(NSView*)view positioned:(NSWindowOrderingMode)place relativeTo:(NSView*)other {
    [self addSubview:view];
}
- (void)setSubviews:(NSArray*)views {
    for (NSView* view in [list(self, "subviews") copy])
        [view removeFromSuperview];
    for (NSView* view in views)
        [self addSubview:view];
}
- (NSArray*)subviews {
    return [list(self, "subviews") copy];
}
- (NSView*)superview {
    return parent(self, "superviewReference");
}
- (void)removeFromSuperview {
    NSView* container = self.superview;
    setParent(self, "superviewReference", nil);
    if (container) // last: the container may hold the only reference
        [list(container, "subviews") removeObjectIdenticalTo:self];
}
- (NSWindow*)window {
    return parent(self, "windowReference") ?: self.superview.window;
}
- (CALayer*)layer {
    if (!property(self, "layer") && integerProperty(self, "wantsLayer"))
        setProperty(self, "layer", [CALayer layer]);
    return property(self, "layer");
}
- (void)addGestureRecognizer:(NSGestureRecognizer*)recognizer {
    [list(self, "gestureRecognizers") addObject:recognizer];
}
- (void)addTrackingArea:(NSTrackingArea*)area {
    [list(self, "trackingAreas") addObject:area];
}
- (void)removeTrackingArea:(NSTrackingArea*)area {
    [list(self, "trackingAreas") removeObjectIdenticalTo:area];
}
- (NSArray*)trackingAreas {
    return [list(self, "trackingAreas") copy];
}
@end

@implementation NSStackView
+ (instancetype)stackViewWithViews:(NSArray*)views {
    NSStackView* stack = [[self alloc] initWithFrame:NSZeroRect];
    for (NSView* view in views)
        [stack addArrangedSubview:view];
    return stack;
}
- (void)addArrangedSubview:(NSView*)view {
    [self addSubview:view];
    [list(self, "arrangedSubviews") addObject:view];
}
- (void)insertArrangedSubview:(NSView*)view atIndex:(NSInteger)index {
    [self addSubview:view];
    [list(self, "arrangedSubviews") insertObject:view atIndex:(NSUInteger)index];
}
- (void)addView:(NSView*)view inGravity:(NSStackViewGravity)gravity {
    [self addArrangedSubview:view];
}
- (void)removeArrangedSubview:(NSView*)view {
    [list(self, "arrangedSubviews") removeObjectIdenticalTo:view];
}
- (NSArray*)arrangedSubviews {
    return [list(self, "arrangedSubviews") copy];
}
@end

@implementation NSWindow
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defers {
    setFrame(self, rect);
    setInteger(self, "styleMask", (long)style);
    return self;
}
- (void)setFrame:(NSRect)frame display:(BOOL)displays {
    setFrame(self, frame);
}
- (void)setFrame:(NSRect)frame display:(BOOL)displays animate:(BOOL)animates {
    setFrame(self, frame);
}
- (void)setFrameOrigin:(NSPoint)origin {
    const NSRect frame = self.frame;
    setFrame(self, NSMakeRect(origin.x, origin.y, frame.size.width, frame.size.height));
}
- (void)setContentSize:(NSSize)size {
    const NSRect frame = self.frame;
    setFrame(self, NSMakeRect(frame.origin.x, frame.origin.y, size.width, size.height));
}
- (NSView*)contentView {
    if (!property(self, "contentView")) {
        const NSRect frame = self.frame;
        self.contentView = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, frame.size.width, frame.size.height)];
    }
    return property(self, "contentView");
}
- (void)setContentView:(NSView*)view {
    setParent(view, "windowReference", self);
    setProperty(self, "contentView", view);
}
- (NSRect)contentRectForFrameRect:(NSRect)frame {
    return frame;
}
- (NSRect)frameRectForContentRect:(NSRect)rect {
    return rect;
}
- (BOOL)makeFirstResponder:(NSResponder*)responder {
    setProperty(self, "firstResponder", responder);
    return YES;
}
- (void)orderFront:(id)sender {
    setInteger(self, "visible", 1);
}
- (void)orderFrontRegardless {
    setInteger(self, "visible", 1);
}
- (void)makeKeyAndOrderFront:(id)sender {
    setInteger(self, "visible", 1);
}
- (void)orderOut:(id)sender {
    setInteger(self, "visible", 0);
}
- (void)close {
    setInteger(self, "visible", 0);
}
@end

@implementation NSAlert
- (NSButton*)addButtonWithTitle:(NSString*)title {
    NSButton* button = [[NSButton alloc] init];
    button.title = title;
    [list(self, "buttons") addObject:button];
    return button;
}
- (NSArray*)buttons {
    return [list(self, "buttons") copy];
}
@end

// A copy is another sound of the same name.
@implementation NSSound
- (id)copyWithZone:(NSZone*)zone {
    NSSound* copy = [[NSSound alloc] init];
    setProperty(copy, "name", property(self, "name"));
    return copy;
}
@end
