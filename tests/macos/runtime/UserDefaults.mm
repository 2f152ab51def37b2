// User defaults, in memory.
#import <Foundation/Foundation.h>

#include "tests/macos/runtime/Properties.h"

using namespace rb::fake;

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
