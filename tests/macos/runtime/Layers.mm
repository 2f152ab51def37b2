// Layers and their animations: the tree, and what was added under which key.
#import <QuartzCore/QuartzCore.h>

#include "tests/macos/runtime/Properties.h"

#include <algorithm>

using namespace rb::fake;

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
