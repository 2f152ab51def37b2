// Arrays, dictionaries and sets.
#import <AppKit/AppKit.h>

#include "tests/macos/runtime/Foundation.h"

#include <algorithm>
#include <cstdarg>
#include <vector>

using namespace rb::fake;

namespace {

std::size_t indexOf(const std::vector<id>& items, id wanted) {
    const auto found = std::find_if(items.begin(), items.end(), [&](id item) { return [item isEqual:wanted]; });
    return static_cast<std::size_t>(found - items.begin());
}

// Fills the state of a for-in loop with objects that the collection keeps alive itself.
NSUInteger enumerate(NSFastEnumerationState* state, const std::vector<id>& items) {
    if (state->state)
        return 0;
    static unsigned long unchanged = 0;
    state->state = 1;
    state->itemsPtr = (__unsafe_unretained id*)(void*)items.data();
    state->mutationsPtr = &unchanged;
    return items.size();
}

} // namespace

@implementation NSArray {
@public
    std::vector<id> items_;
}
+ (instancetype)array {
    return [[self alloc] init];
}
+ (instancetype)arrayWithObject:(id)object {
    return [self arrayWithObjects:&object count:1];
}
+ (instancetype)arrayWithArray:(NSArray*)other {
    return [[self alloc] initWithArray:other];
}
+ (instancetype)arrayWithObjects:(const id*)objects count:(NSUInteger)count {
    NSArray* array = [[self alloc] init];
    array->items_.assign(objects, objects + count);
    return array;
}
+ (instancetype)arrayWithObjects:(id)first, ... {
    NSArray* array = [[self alloc] init];
    va_list arguments;
    va_start(arguments, first);
    for (id object = first; object; object = va_arg(arguments, id))
        array->items_.push_back(object);
    va_end(arguments);
    return array;
}
+ (NSArray*)arrayWithItems:(const std::vector<id>&)items {
    NSArray* array = [[self alloc] init];
    array->items_ = items;
    return array;
}
- (instancetype)initWithArray:(NSArray*)other {
    items_ = other->items_;
    return self;
}
- (instancetype)initWithObjects:(const id*)objects count:(NSUInteger)count {
    items_.assign(objects, objects + count);
    return self;
}
- (id)copyWithZone:(NSZone*)zone {
    return [[NSArray alloc] initWithArray:self];
}
- (id)mutableCopyWithZone:(NSZone*)zone {
    return [[NSMutableArray alloc] initWithArray:self];
}
- (NSUInteger)count {
    return items_.size();
}
- (id)objectAtIndex:(NSUInteger)index {
    return items_.at(index);
}
- (id)objectAtIndexedSubscript:(NSUInteger)index {
    return items_.at(index);
}
- (id)firstObject {
    return items_.empty() ? nil : items_.front();
}
- (id)lastObject {
    return items_.empty() ? nil : items_.back();
}
- (BOOL)containsObject:(id)object {
    return indexOf(items_, object) < items_.size();
}
- (NSUInteger)indexOfObject:(id)object {
    const std::size_t index = indexOf(items_, object);
    return index < items_.size() ? index : NSNotFound;
}
- (NSUInteger)indexOfObjectIdenticalTo:(id)object {
    const auto found = std::find(items_.begin(), items_.end(), object);
    return found == items_.end() ? NSNotFound : static_cast<NSUInteger>(found - items_.begin());
}
- (NSArray*)arrayByAddingObject:(id)object {
    NSArray* array = [[NSArray alloc] initWithArray:self];
    array->items_.push_back(object);
    return array;
}
- (NSArray*)arrayByAddingObjectsFromArray:(NSArray*)other {
    NSArray* array = [[NSArray alloc] initWithArray:self];
    array->items_.insert(array->items_.end(), other->items_.begin(), other->items_.end());
    return array;
}
- (NSString*)componentsJoinedByString:(NSString*)separator {
    std::string text;
    for (std::size_t i = 0; i < items_.size(); ++i)
        text += (i ? utf8(separator) : "") + utf8([items_[i] description]);
    return string(text);
}
- (void)enumerateObjectsUsingBlock:(void (^)(id, NSUInteger, BOOL*))block {
    BOOL stop = NO;
    for (NSUInteger i = 0; i < items_.size() && !stop; ++i)
        block(items_[i], i, &stop);
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained*)buffer
                                    count:(NSUInteger)count {
    return enumerate(state, items_);
}
- (BOOL)isEqual:(id)other {
    if (![other isKindOfClass:NSArray.class] || items_.size() != ((NSArray*)other)->items_.size())
        return NO;
    for (std::size_t i = 0; i < items_.size(); ++i)
        if (![items_[i] isEqual:((NSArray*)other)->items_[i]])
            return NO;
    return YES;
}
- (BOOL)isEqualToArray:(NSArray*)other {
    return [self isEqual:other];
}
- (NSString*)description {
    return string(rb::fake::describeValue(self));
}
@end

@implementation NSMutableArray
+ (instancetype)arrayWithCapacity:(NSUInteger)capacity {
    return [[self alloc] init];
}
- (instancetype)initWithCapacity:(NSUInteger)capacity {
    return self;
}
- (void)addObject:(id)object {
    items_.push_back(object);
}
- (void)addObjectsFromArray:(NSArray*)other {
    const std::vector<id> added = other->items_;
    items_.insert(items_.end(), added.begin(), added.end());
}
- (void)insertObject:(id)object atIndex:(NSUInteger)index {
    items_.insert(items_.begin() + static_cast<long>(index), object);
}
- (void)removeObject:(id)object {
    items_.erase(std::remove_if(items_.begin(), items_.end(), [&](id item) { return [item isEqual:object]; }),
                 items_.end());
}
- (void)removeObjectIdenticalTo:(id)object {
    items_.erase(std::remove(items_.begin(), items_.end(), object), items_.end());
}
- (void)removeObjectAtIndex:(NSUInteger)index {
    items_.erase(items_.begin() + static_cast<long>(index));
}
- (void)removeLastObject {
    items_.pop_back();
}
- (void)removeAllObjects {
    items_.clear();
}
- (void)replaceObjectAtIndex:(NSUInteger)index withObject:(id)object {
    items_.at(index) = object;
}
- (void)setObject:(id)object atIndexedSubscript:(NSUInteger)index {
    if (index == items_.size())
        items_.push_back(object);
    else
        items_.at(index) = object;
}
- (void)setArray:(NSArray*)other {
    items_ = other->items_;
}
@end

@implementation NSDictionary {
@public
    std::vector<id> keys_;
    std::vector<id> values_;
}
+ (instancetype)dictionary {
    return [[self alloc] init];
}
+ (instancetype)dictionaryWithObject:(id)object forKey:(id)key {
    return [self dictionaryWithObjects:&object forKeys:&key count:1];
}
+ (instancetype)dictionaryWithDictionary:(NSDictionary*)other {
    return [[self alloc] initWithDictionary:other];
}
+ (instancetype)dictionaryWithObjects:(const id*)objects forKeys:(const id*)keys count:(NSUInteger)count {
    NSDictionary* dictionary = [[self alloc] init];
    for (NSUInteger i = 0; i < count; ++i)
        [dictionary put:objects[i] key:keys[i]];
    return dictionary;
}
+ (instancetype)dictionaryWithObjectsAndKeys:(id)first, ... {
    NSDictionary* dictionary = [[self alloc] init];
    va_list arguments;
    va_start(arguments, first);
    for (id object = first; object; object = va_arg(arguments, id))
        [dictionary put:object key:va_arg(arguments, id)];
    va_end(arguments);
    return dictionary;
}
- (instancetype)initWithDictionary:(NSDictionary*)other {
    keys_ = other->keys_;
    values_ = other->values_;
    return self;
}
- (void)put:(id)object key:(id)key {
    const std::size_t index = indexOf(keys_, key);
    if (index < keys_.size()) {
        values_[index] = object;
    } else {
        keys_.push_back([key isKindOfClass:NSString.class] ? [key copy] : key);
        values_.push_back(object);
    }
}
- (id)copyWithZone:(NSZone*)zone {
    return [[NSDictionary alloc] initWithDictionary:self];
}
- (id)mutableCopyWithZone:(NSZone*)zone {
    return [[NSMutableDictionary alloc] initWithDictionary:self];
}
- (NSUInteger)count {
    return keys_.size();
}
- (id)objectForKey:(id)key {
    const std::size_t index = indexOf(keys_, key);
    return index < keys_.size() ? values_[index] : nil;
}
- (id)objectForKeyedSubscript:(id)key {
    return [self objectForKey:key];
}
- (id)valueForKey:(NSString*)key {
    return [self objectForKey:key];
}
- (NSArray*)allKeys {
    return [NSArray arrayWithItems:keys_];
}
- (NSArray*)allValues {
    return [NSArray arrayWithItems:values_];
}
- (void)enumerateKeysAndObjectsUsingBlock:(void (^)(id, id, BOOL*))block {
    BOOL stop = NO;
    for (NSUInteger i = 0; i < keys_.size() && !stop; ++i)
        block(keys_[i], values_[i], &stop);
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained*)buffer
                                    count:(NSUInteger)count {
    return enumerate(state, keys_);
}
- (BOOL)isEqual:(id)other {
    if (![other isKindOfClass:NSDictionary.class] || self.count != [other count])
        return NO;
    for (std::size_t i = 0; i < keys_.size(); ++i)
        if (![values_[i] isEqual:[other objectForKey:keys_[i]]])
            return NO;
    return YES;
}
- (BOOL)isEqualToDictionary:(NSDictionary*)other {
    return [self isEqual:other];
}
- (NSString*)description {
    return string(rb::fake::describeValue(self));
}
@end

@implementation NSMutableDictionary
+ (instancetype)dictionaryWithCapacity:(NSUInteger)capacity {
    return [[self alloc] init];
}
- (void)setObject:(id)object forKey:(id)key {
    [self put:object key:key];
}
- (void)setObject:(id)object forKeyedSubscript:(id)key {
    if (object)
        [self put:object key:key];
    else
        [self removeObjectForKey:key];
}
- (void)setValue:(id)object forKey:(NSString*)key {
    [self setObject:object forKeyedSubscript:key];
}
- (void)removeObjectForKey:(id)key {
    const std::size_t index = indexOf(keys_, key);
    if (index == keys_.size())
        return;
    keys_.erase(keys_.begin() + static_cast<long>(index));
    values_.erase(values_.begin() + static_cast<long>(index));
}
- (void)removeAllObjects {
    keys_.clear();
    values_.clear();
}
- (void)addEntriesFromDictionary:(NSDictionary*)other {
    for (id key in other)
        [self put:other[key] key:key];
}
@end

@implementation NSSet {
@public
    NSMutableArray* items_;
}
+ (instancetype)set {
    return [[self alloc] init];
}
+ (instancetype)setWithArray:(NSArray*)array {
    NSSet* set = [[self alloc] init];
    for (id object in array)
        if (![set->items_ containsObject:object])
            [set->items_ addObject:object];
    return set;
}
+ (instancetype)setWithObject:(id)object {
    return [self setWithArray:@[ object ]];
}
+ (instancetype)setWithObjects:(const id*)objects count:(NSUInteger)count {
    return [self setWithArray:[NSArray arrayWithItems:std::vector<id>(objects, objects + count)]];
}
- (instancetype)init {
    items_ = [NSMutableArray array];
    return self;
}
- (NSUInteger)count {
    return items_.count;
}
- (BOOL)containsObject:(id)object {
    return [items_ containsObject:object];
}
- (NSArray*)allObjects {
    return [items_ copy];
}
- (id)anyObject {
    return items_.firstObject;
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained*)buffer
                                    count:(NSUInteger)count {
    return enumerate(state, items_->items_);
}
@end

@implementation NSMutableSet
- (void)addObject:(id)object {
    if (![items_ containsObject:object])
        [items_ addObject:object];
}
- (void)removeObject:(id)object {
    [items_ removeObject:object];
}
- (void)removeAllObjects {
    [items_ removeAllObjects];
}
@end
