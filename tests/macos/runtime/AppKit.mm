// Hand-written behaviour of the system classes whose answers code depends on: what holds what, and what was posted.
// It is bookkeeping, not AppKit: nothing is drawn, laid out or animated.
#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>

#include "tests/macos/runtime/Recorder.h"
#include <algorithm>

using rb::fake::integerProperty;
using rb::fake::property;
using rb::fake::setProperty;
using rb::fake::setPropertyBytes;

@interface RBFakeWeakReference : NSObject
- (instancetype)initWithObject:(id)object;
- (id)object;
@end

namespace {

// The mutable list behind a property, made on first use.
NSMutableArray* list(id owner, const char* name) {
    NSMutableArray* items = property(owner, name);
    if (!items) {
        items = [NSMutableArray array];
        setProperty(owner, name, items);
    }
    return items;
}

// A reference upwards that doesn't keep its object alive.
void setParent(id child, const char* name, id parent) {
    setProperty(child, name, parent ? [[RBFakeWeakReference alloc] initWithObject:parent] : nil);
}
id parent(id child, const char* name) {
    return [(RBFakeWeakReference*)property(child, name) object];
}

void setFrame(id owner, NSRect frame) {
    setPropertyBytes(owner, "frame", &frame, sizeof frame);
    const NSRect bounds = NSMakeRect(0, 0, frame.size.width, frame.size.height);
    setPropertyBytes(owner, "bounds", &bounds, sizeof bounds);
}

void setInteger(id owner, const char* name, long value) {
    setPropertyBytes(owner, name, &value, sizeof value);
}

} // namespace

@implementation RBFakeWeakReference {
    __weak id object_;
}
- (instancetype)initWithObject:(id)object {
    object_ = object;
    return self;
}
- (id)object {
    return object_;
}
@end

extern "C" NSApplication* NSApp;
NSApplication* NSApp;

@implementation NSApplication
+ (NSApplication*)sharedApplication {
    if (!NSApp) {
        NSApp = [[NSApplication alloc] init];
        static bool once = (rb::fake::onReset([] { NSApp = nil; }), true);
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

@implementation NSMenu
- (instancetype)initWithTitle:(NSString*)title {
    setProperty(self, "title", title);
    return self;
}
- (void)addItem:(NSMenuItem*)item {
    [self insertItem:item atIndex:(NSInteger)list(self, "itemArray").count];
}
- (void)insertItem:(NSMenuItem*)item atIndex:(NSInteger)index {
    [list(self, "itemArray") insertObject:item atIndex:(NSUInteger)index];
    setParent(item, "menuReference", self);
}
- (NSMenuItem*)addItemWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key {
    NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:key];
    [self addItem:item];
    return item;
}
- (void)removeItem:(NSMenuItem*)item {
    setParent(item, "menuReference", nil);
    [list(self, "itemArray") removeObjectIdenticalTo:item];
}
- (void)removeItemAtIndex:(NSInteger)index {
    [self removeItem:[self itemAtIndex:index]];
}
- (void)removeAllItems {
    for (NSMenuItem* item in self.itemArray)
        [self removeItem:item];
}
- (NSArray*)itemArray {
    return [list(self, "itemArray") copy];
}
- (NSInteger)numberOfItems {
    return (NSInteger)list(self, "itemArray").count;
}
- (NSMenuItem*)itemAtIndex:(NSInteger)index {
    return list(self, "itemArray")[(NSUInteger)index];
}
- (NSInteger)indexOfItem:(NSMenuItem*)item {
    const NSUInteger index = [list(self, "itemArray") indexOfObjectIdenticalTo:item];
    return index == NSNotFound ? -1 : (NSInteger)index;
}
- (NSMenuItem*)itemWithTag:(NSInteger)tag {
    for (NSMenuItem* item in self.itemArray)
        if (item.tag == tag)
            return item;
    return nil;
}
@end

@implementation NSMenuItem
+ (NSMenuItem*)separatorItem {
    NSMenuItem* item = [[NSMenuItem alloc] init];
    setInteger(item, "separatorItem", 1);
    return item;
}
- (instancetype)init {
    setInteger(self, "enabled", 1);
    return self;
}
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key {
    setInteger(self, "enabled", 1);
    setProperty(self, "title", title);
    setInteger(self, "action", (long)action);
    setProperty(self, "keyEquivalent", key);
    return self;
}
- (NSMenu*)menu {
    return parent(self, "menuReference");
}
- (BOOL)hasSubmenu {
    return self.submenu != nil;
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

@implementation NSPopUpButton
- (NSMenu*)menu {
    if (!property(self, "menu"))
        setProperty(self, "menu", [[NSMenu alloc] initWithTitle:@""]);
    return property(self, "menu");
}
- (void)addItemWithTitle:(NSString*)title {
    [self.menu addItemWithTitle:title action:nil keyEquivalent:@""];
}
- (void)addItemsWithTitles:(NSArray*)titles {
    for (NSString* title in titles)
        [self addItemWithTitle:title];
}
- (void)removeAllItems {
    [self.menu removeAllItems];
}
- (NSArray*)itemArray {
    return self.menu.itemArray;
}
- (NSInteger)numberOfItems {
    return self.menu.numberOfItems;
}
- (NSMenuItem*)lastItem {
    return self.itemArray.lastObject;
}
- (NSMenuItem*)itemAtIndex:(NSInteger)index {
    return [self.menu itemAtIndex:index];
}
- (void)selectItemAtIndex:(NSInteger)index {
    setInteger(self, "indexOfSelectedItem", index);
}
- (NSMenuItem*)selectedItem {
    const long index = integerProperty(self, "indexOfSelectedItem");
    return index >= 0 && index < self.numberOfItems ? [self itemAtIndex:index] : nil;
}
- (NSString*)titleOfSelectedItem {
    return self.selectedItem.title;
}
@end

@implementation CALayer
- (void)addSublayer:(CALayer*)layer {
    [layer removeFromSuperlayer];
    [list(self, "sublayers") addObject:layer];
    setParent(layer, "superlayerReference", self);
}
- (void)insertSublayer:(CALayer*)layer atIndex:(unsigned)index {
    [layer removeFromSuperlayer];
    NSMutableArray* layers = list(self, "sublayers");
    [layers insertObject:layer atIndex:std::min<NSUInteger>(index, layers.count)];
    setParent(layer, "superlayerReference", self);
}
- (void)insertSublayer:(CALayer*)layer above:(CALayer*)other {
    [layer removeFromSuperlayer];
    [self insertSublayer:layer atIndex:(unsigned)[list(self, "sublayers") indexOfObjectIdenticalTo:other] + 1];
}
- (void)insertSublayer:(CALayer*)layer below:(CALayer*)other {
    [layer removeFromSuperlayer];
    [self insertSublayer:layer atIndex:(unsigned)[list(self, "sublayers") indexOfObjectIdenticalTo:other]];
}
- (void)setSublayers:(NSArray*)layers {
    for (CALayer* layer in [list(self, "sublayers") copy])
        [layer removeFromSuperlayer];
    for (CALayer* layer in layers)
        [self addSublayer:layer];
}
- (NSArray*)sublayers {
    NSArray* layers = [list(self, "sublayers") copy];
    return layers.count ? layers : nil;
}
- (CALayer*)superlayer {
    return parent(self, "superlayerReference");
}
- (void)removeFromSuperlayer {
    CALayer* container = self.superlayer;
    setParent(self, "superlayerReference", nil);
    if (container)
        [list(container, "sublayers") removeObjectIdenticalTo:self];
}
// Kept until it is removed: in the fakes no animation ever ends by itself.
- (void)addAnimation:(CAAnimation*)animation forKey:(NSString*)key {
    NSMutableDictionary* animations = property(self, "animations");
    if (!animations) {
        animations = [NSMutableDictionary dictionary];
        setProperty(self, "animations", animations);
    }
    animations[key ?: @""] = animation;
}
- (CAAnimation*)animationForKey:(NSString*)key {
    return [property(self, "animations") objectForKey:key];
}
- (void)removeAnimationForKey:(NSString*)key {
    [property(self, "animations") removeObjectForKey:key];
}
- (void)removeAllAnimations {
    [property(self, "animations") removeAllObjects];
}
- (NSArray*)animationKeys {
    NSArray* keys = [property(self, "animations") allKeys];
    return keys.count ? keys : nil;
}
@end

@implementation CABasicAnimation
+ (instancetype)animationWithKeyPath:(NSString*)path {
    CABasicAnimation* animation = [[self alloc] init];
    animation.keyPath = path;
    return animation;
}
@end

@implementation CAKeyframeAnimation
+ (instancetype)animationWithKeyPath:(NSString*)path {
    CAKeyframeAnimation* animation = [[self alloc] init];
    animation.keyPath = path;
    return animation;
}
@end

@implementation NSNotification {
    NSString* name_;
    id object_;
    NSDictionary* info_;
}
+ (instancetype)notificationWithName:(NSString*)name object:(id)object userInfo:(NSDictionary*)info {
    NSNotification* notification = [[self alloc] init];
    notification->name_ = [name copy];
    notification->object_ = object;
    notification->info_ = info;
    return notification;
}
+ (instancetype)notificationWithName:(NSString*)name object:(id)object {
    return [self notificationWithName:name object:object userInfo:nil];
}
- (NSString*)name {
    return name_;
}
- (id)object {
    return object_;
}
- (NSDictionary*)userInfo {
    return info_;
}
@end

// One registration; it doubles as the token of a block observer and owns the block.
@interface RBFakeObserver : NSObject {
@public
    __weak id receiver;
    __weak id object;
    SEL selector;
    NSString* name;
    void (^block)(NSNotification*);
}
@end
@implementation RBFakeObserver
@end

@implementation NSNotificationCenter
+ (NSNotificationCenter*)defaultCenter {
    static NSNotificationCenter* center;
    if (!center) {
        center = [[NSNotificationCenter alloc] init];
        static bool once = (rb::fake::onReset([] { center = nil; }), true);
        (void)once;
    }
    return center;
}
- (void)addObserver:(id)receiver selector:(SEL)selector name:(NSString*)name object:(id)object {
    RBFakeObserver* observer = [[RBFakeObserver alloc] init];
    observer->receiver = receiver;
    observer->selector = selector;
    observer->name = [name copy];
    observer->object = object;
    [list(self, "observers") addObject:observer];
}
- (void)addObserver:(id)receiver
              selector:(SEL)selector
                  name:(NSString*)name
                object:(NSString*)object
    suspensionBehavior:(NSUInteger)behaviour {
    [self addObserver:receiver selector:selector name:name object:object];
}
- (id<NSObject>)addObserverForName:(NSString*)name
                            object:(id)object
                             queue:(NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification*))block {
    RBFakeObserver* observer = [[RBFakeObserver alloc] init];
    observer->block = [block copy];
    observer->name = [name copy];
    observer->object = object;
    [list(self, "observers") addObject:observer];
    return observer;
}
- (void)removeObserver:(id)receiver {
    [self removeObserver:receiver name:nil object:nil];
}
- (void)removeObserver:(id)receiver name:(NSString*)name object:(id)object {
    for (RBFakeObserver* observer in [list(self, "observers") copy]) {
        const bool isReceiver = observer == receiver || (!observer->block && observer->receiver == receiver);
        if (isReceiver && (!name || [observer->name isEqual:name]))
            [list(self, "observers") removeObjectIdenticalTo:observer];
    }
}
- (void)postNotificationName:(NSString*)name object:(id)object {
    [self postNotificationName:name object:object userInfo:nil];
}
- (void)postNotificationName:(NSString*)name object:(id)object userInfo:(NSDictionary*)info {
    [self postNotification:[NSNotification notificationWithName:name object:object userInfo:info]];
}
- (void)postNotification:(NSNotification*)notification {
    for (RBFakeObserver* observer in [list(self, "observers") copy]) {
        if (observer->name && ![observer->name isEqual:notification.name])
            continue;
        if (observer->object && observer->object != notification.object)
            continue;
        if (observer->block)
            observer->block(notification);
        else
            [observer->receiver performSelector:observer->selector withObject:notification];
    }
}
@end

// Handlers of events belong to their monitors, and the system keeps a monitor until it is removed.
@implementation NSEvent
+ (id)keepMonitor:(void*)handler {
    RBFakeObserver* monitor = [[RBFakeObserver alloc] init];
    monitor->block = (__bridge void (^)(NSNotification*))handler;
    [list(NSApplication.sharedApplication, "eventMonitors") addObject:monitor];
    return monitor;
}
+ (id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(void (^)(NSEvent*))handler {
    return [self keepMonitor:(__bridge void*)[handler copy]];
}
+ (id)addLocalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(NSEvent* (^)(NSEvent*))handler {
    return [self keepMonitor:(__bridge void*)[handler copy]];
}
+ (void)removeMonitor:(id)monitor {
    [list(NSApplication.sharedApplication, "eventMonitors") removeObjectIdenticalTo:monitor];
}
@end

@implementation NSUserDefaults
- (NSMutableDictionary*)fakeValues {
    if (!property(self, "values"))
        setProperty(self, "values", [NSMutableDictionary dictionary]);
    return property(self, "values");
}
- (void)registerDefaults:(NSDictionary*)defaults {
    NSMutableDictionary* registered = property(self, "registered") ?: [NSMutableDictionary dictionary];
    [registered addEntriesFromDictionary:defaults];
    setProperty(self, "registered", registered);
}
- (id)objectForKey:(NSString*)key {
    return [self fakeValues][key] ?: [property(self, "registered") objectForKey:key];
}
- (void)setObject:(id)value forKey:(NSString*)key {
    [self fakeValues][key] = value;
}
- (void)removeObjectForKey:(NSString*)key {
    [[self fakeValues] removeObjectForKey:key];
}
- (NSDictionary*)dictionaryRepresentation {
    return [[self fakeValues] copy];
}
- (void)setBool:(BOOL)value forKey:(NSString*)key {
    [self fakeValues][key] = [NSNumber numberWithBool:value];
}
- (void)setInteger:(NSInteger)value forKey:(NSString*)key {
    [self fakeValues][key] = @(value);
}
- (void)setDouble:(double)value forKey:(NSString*)key {
    [self fakeValues][key] = @(value);
}
- (BOOL)boolForKey:(NSString*)key {
    return [[self fakeValues][key] boolValue];
}
- (NSInteger)integerForKey:(NSString*)key {
    return [[self fakeValues][key] integerValue];
}
- (double)doubleForKey:(NSString*)key {
    return [[self fakeValues][key] doubleValue];
}
- (NSString*)stringForKey:(NSString*)key {
    id value = [self fakeValues][key];
    return [value isKindOfClass:NSString.class] ? value : nil;
}
- (NSArray*)arrayForKey:(NSString*)key {
    id value = [self fakeValues][key];
    return [value isKindOfClass:NSArray.class] ? value : nil;
}
- (NSDictionary*)dictionaryForKey:(NSString*)key {
    id value = [self fakeValues][key];
    return [value isKindOfClass:NSDictionary.class] ? value : nil;
}
- (NSData*)dataForKey:(NSString*)key {
    id value = [self fakeValues][key];
    return [value isKindOfClass:NSData.class] ? value : nil;
}
@end
