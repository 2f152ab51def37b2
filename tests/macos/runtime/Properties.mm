#include "tests/macos/runtime/Properties.h"

@interface RBFakeWeakReference : NSObject
- (instancetype)initWithObject:(id)object;
- (id)object;
@end

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

namespace rb::fake {

NSMutableArray* list(id owner, const char* name) {
    NSMutableArray* items = property(owner, name);
    if (!items) {
        items = [NSMutableArray array];
        setProperty(owner, name, items);
    }
    return items;
}

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

} // namespace rb::fake
