// What every object can do.
#import <AppKit/AppKit.h>

#include "tests/macos/runtime/Foundation.h"
#include "tests/macos/runtime/Runtime.h"

using namespace rb::fake;

namespace {
rb::objc::Class* runtimeClass(Class cls) {
    return (rb::objc::Class*)(__bridge void*)cls;
}
} // namespace

@implementation NSObject
+ (void)load {
}
+ (void)initialize {
}
+ (instancetype)alloc {
    return (__bridge_transfer id)(void*)rb::objc::allocate(runtimeClass(self));
}
+ (instancetype)allocWithZone:(NSZone*)zone {
    return [self alloc];
}
+ (instancetype)new {
    return [[self alloc] init];
}
- (instancetype)init {
    return self;
}
- (void)dealloc {
}
+ (Class)class {
    return self;
}
- (Class)class {
    return object_getClass(self);
}
+ (Class)superclass {
    return class_getSuperclass(self);
}
- (Class)superclass {
    return class_getSuperclass(object_getClass(self));
}
- (instancetype)self {
    return self;
}
- (id)copy {
    return [self copyWithZone:nil];
}
- (id)mutableCopy {
    return [self mutableCopyWithZone:nil];
}
// A faked object is its own copy.
- (id)copyWithZone:(NSZone*)zone {
    return self;
}
- (id)mutableCopyWithZone:(NSZone*)zone {
    return self;
}
- (BOOL)isEqual:(id)other {
    return self == other;
}
- (NSUInteger)hash {
    return (NSUInteger)(__bridge void*)self;
}
- (BOOL)isKindOfClass:(Class)wanted {
    for (Class cls = object_getClass(self); cls; cls = class_getSuperclass(cls))
        if (cls == wanted)
            return YES;
    return NO;
}
+ (BOOL)isSubclassOfClass:(Class)wanted {
    for (Class cls = self; cls; cls = class_getSuperclass(cls))
        if (cls == wanted)
            return YES;
    return NO;
}
- (BOOL)isMemberOfClass:(Class)wanted {
    return object_getClass(self) == wanted;
}
- (BOOL)respondsToSelector:(SEL)selector {
    return class_respondsToSelector(object_getClass(self), selector);
}
+ (BOOL)instancesRespondToSelector:(SEL)selector {
    return class_respondsToSelector(self, selector);
}
- (BOOL)conformsToProtocol:(Protocol*)protocol {
    return YES;
}
- (id)performSelector:(SEL)selector withObject:(id)object {
    const auto found = rb::objc::find(runtimeClass(object_getClass(self)), reinterpret_cast<const char*>(selector));
    if (found.implementation)
        reinterpret_cast<void (*)(id, SEL, id)>(found.implementation)(self, selector, object);
    return nil;
}
- (id)performSelector:(SEL)selector {
    return [self performSelector:selector withObject:nil];
}
- (NSString*)description {
    return string("<" + std::string(object_getClassName(self)) + ">");
}
- (NSString*)debugDescription {
    return self.description;
}
@end
