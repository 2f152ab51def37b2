// CoreFoundation objects, toll-free bridging, and the C functions and constants of Foundation.
#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>

#include "tests/macos/runtime/Foundation.h"
#include "tests/macos/runtime/Recorder.h"
#include "tests/macos/runtime/Runtime.h"

#include <cstring>

using namespace rb::fake;

@interface RBFakeCoreObject : NSObject {
@public
    std::string typeName;
}
@end
@implementation RBFakeCoreObject
@end

namespace rb::fake {

namespace {

std::map<std::string, void*>& providedFunctions() {
    static auto* functions = [] {
        auto* made = new std::map<std::string, void*>;
        onReset([made] { made->clear(); });
        return made;
    }();
    return *functions;
}

} // namespace

void provideFunction(const std::string& name, void* function) {
    providedFunctions()[name] = function;
}

id makeCoreObject(const std::string& typeName) {
    RBFakeCoreObject* object = [[RBFakeCoreObject alloc] init];
    object->typeName = typeName;
    return object;
}

std::string describeValue(id object) {
    if (!object)
        return "nil";
    if ([object isKindOfClass:NSString.class])
        return "@\"" + utf8(object) + "\"";
    if ([object isKindOfClass:NSNumber.class])
        return std::strcmp([object objCType], "c") == 0 ? ([object boolValue] ? "@YES" : "@NO")
                                                        : "@" + utf8([object description]);
    if ([object isKindOfClass:NSValue.class])
        return "@" + utf8([object description]);
    if ([object isKindOfClass:NSURL.class])
        return "<" + utf8([object absoluteString]) + ">";
    if ([object isKindOfClass:NSData.class])
        return utf8([object description]);
    if ([object isKindOfClass:NSArray.class]) {
        std::string text;
        for (id item in (NSArray*)object)
            text += (text.empty() ? "" : ", ") + describeValue(item);
        return "@[" + text + "]";
    }
    if ([object isKindOfClass:NSDictionary.class]) {
        std::string text;
        for (id key in (NSDictionary*)object)
            text += (text.empty() ? "" : ", ") + describeValue(key) + ": " + describeValue([object objectForKey:key]);
        return "@{" + text + "}";
    }
    if ([object isKindOfClass:RBFakeCoreObject.class])
        return "<" + ((RBFakeCoreObject*)object)->typeName + ">";
    return "<" + std::string(object_getClassName(object)) + ">";
}

} // namespace rb::fake

extern "C" {

void NSLog(NSString* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    NSString* text = string(formatted(format, arguments));
    recordFunction("NSLog", {text});
    va_end(arguments);
}
Class NSClassFromString(NSString* name) {
    return objc_lookUpClass(name.UTF8String);
}
NSString* NSStringFromClass(Class cls) {
    return string(class_getName(cls));
}
NSString* NSStringFromSelector(SEL selector) {
    return string(sel_getName(selector));
}
SEL NSSelectorFromString(NSString* name) {
    return sel_registerName(name.UTF8String);
}
NSString* NSHomeDirectory(void) {
    return @"/Users/test";
}

// Toll-free bridging: a CoreFoundation object is the Foundation object.
CFTypeRef CFRetain(CFTypeRef object) {
    return rb::objc::retain((rb::objc::Object*)const_cast<void*>(object));
}
void CFRelease(CFTypeRef object) {
    rb::objc::release((rb::objc::Object*)const_cast<void*>(object));
}
CFTypeRef CFAutorelease(CFTypeRef object) {
    return rb::objc::autorelease((rb::objc::Object*)const_cast<void*>(object));
}
id CFBridgingRelease(CFTypeRef object) {
    return (__bridge_transfer id) const_cast<void*>(object);
}
CFTypeRef CFBridgingRetain(id object) {
    return (__bridge_retained CFTypeRef)object;
}
CFTypeID CFStringGetTypeID(void) {
    return 7;
}
CFTypeID CFBooleanGetTypeID(void) {
    return 21;
}
CFTypeID CFNumberGetTypeID(void) {
    return 22;
}
CFTypeID CFGetTypeID(CFTypeRef reference) {
    id object = (__bridge id) const_cast<void*>(reference);
    if ([object isKindOfClass:NSNumber.class])
        return std::strcmp([object objCType], "c") == 0 ? CFBooleanGetTypeID() : CFNumberGetTypeID();
    return [object isKindOfClass:NSString.class] ? CFStringGetTypeID() : 1;
}
Boolean CFNumberIsFloatType(CFNumberRef number) {
    return std::strcmp(((__bridge NSNumber*)number).objCType, "d") == 0;
}
CFIndex CFArrayGetCount(CFArrayRef array) {
    return (CFIndex)((__bridge NSArray*)array).count;
}
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    return (__bridge const void*)((__bridge NSArray*)array)[(NSUInteger)index];
}
void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
    [(__bridge NSMutableArray*)array addObject:(__bridge id) const_cast<void*>(value)];
}
CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
    return (CFIndex)((__bridge NSDictionary*)dictionary).count;
}
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    return (__bridge const void*)((__bridge NSDictionary*)dictionary)[(__bridge id) const_cast<void*>(key)];
}
void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value) {
    [(__bridge NSMutableDictionary*)dictionary setObject:(__bridge id) const_cast<void*>(value)
                                                  forKey:(__bridge id) const_cast<void*>(key)];
}
Boolean CFEqual(CFTypeRef one, CFTypeRef other) {
    return [(__bridge id) const_cast<void*>(one) isEqual:(__bridge id) const_cast<void*>(other)] ? 1 : 0;
}
CFIndex CFStringGetLength(CFStringRef text) {
    return (CFIndex)((__bridge NSString*)text).length;
}
CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding) {
    return (__bridge_retained CFStringRef)string(text);
}
CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex length, CFStringEncoding, Boolean) {
    return (__bridge_retained CFStringRef)string(
        std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)));
}
const UInt8* CFDataGetBytePtr(CFDataRef data) {
    return static_cast<const UInt8*>(((__bridge NSData*)data).bytes);
}
CFIndex CFDataGetLength(CFDataRef data) {
    return (CFIndex)((__bridge NSData*)data).length;
}
CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
    return (__bridge_retained CFDataRef)[NSData dataWithBytes:bytes length:(NSUInteger)length];
}

void* dlsym_recorded(void*, const char* name) {
    recordFunction("dlsym", {string(name)});
    const auto found = providedFunctions().find(name);
    return found == providedFunctions().end() ? nullptr : found->second;
}

// The compiler's objects for @[] and @{}.
id __NSArray0__ = [[NSArray alloc] init];
id __NSDictionary0__ = [[NSDictionary alloc] init];

// Constants whose value matters.
CFBooleanRef const kCFBooleanTrue = (__bridge_retained CFBooleanRef) @YES;
CFBooleanRef const kCFBooleanFalse = (__bridge_retained CFBooleanRef) @NO;
const CGPoint CGPointZero = {0, 0};
const CGSize CGSizeZero = {0, 0};
const CGRect CGRectZero = {{0, 0}, {0, 0}};
const CGRect CGRectNull = {{__builtin_inf(), __builtin_inf()}, {0, 0}};
const NSPoint NSZeroPoint = {0, 0};
const NSSize NSZeroSize = {0, 0};
const NSRect NSZeroRect = {{0, 0}, {0, 0}};
const CGAffineTransform CGAffineTransformIdentity = {1, 0, 0, 1, 0, 0};
const CATransform3D CATransform3DIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}
