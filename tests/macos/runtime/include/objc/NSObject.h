#pragma once

#include <objc/objc.h>

@class NSString, NSMethodSignature, NSInvocation, Protocol;
typedef struct _NSZone NSZone;

@protocol NSObject
- (BOOL)isEqual:(id _Nullable)other;
@property(readonly) NSUInteger hash;
@property(readonly) Class _Nonnull superclass;
- (Class _Nonnull)class;
- (instancetype _Nonnull)self;
- (BOOL)isKindOfClass:(Class _Nonnull)cls;
- (BOOL)isMemberOfClass:(Class _Nonnull)cls;
- (BOOL)respondsToSelector:(SEL _Nonnull)selector;
- (BOOL)conformsToProtocol:(Protocol* _Nonnull)protocol;
- (id _Nullable)performSelector:(SEL _Nonnull)selector;
- (id _Nullable)performSelector:(SEL _Nonnull)selector withObject:(id _Nullable)object;
@property(readonly, copy) NSString* _Nonnull description;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {
    Class isa;
}
+ (void)load;
+ (void)initialize;
+ (instancetype _Nonnull)alloc;
+ (instancetype _Nonnull)allocWithZone:(NSZone* _Nullable)zone;
+ (instancetype _Nonnull)new;
- (instancetype _Nonnull)init;
+ (Class _Nonnull)class;
+ (BOOL)instancesRespondToSelector:(SEL _Nonnull)selector;
- (id _Nonnull)copy;
- (id _Nonnull)mutableCopy;
- (void)dealloc;
@end
