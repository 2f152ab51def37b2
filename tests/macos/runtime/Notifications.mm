// Who is told of what: notifications and event monitors.
#import <AppKit/AppKit.h>

#include "tests/macos/runtime/Properties.h"

using namespace rb::fake;

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
        static bool once = (onReset([] { center = nil; }), true);
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
