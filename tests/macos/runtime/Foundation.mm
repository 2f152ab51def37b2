// The Foundation values that work for real in the fakes: text, numbers, collections, data, URLs, errors, dates.
// Only what a desktop may reasonably use of them; an unwritten method falls back to the generic fake and is recorded.
#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>

#include "tests/macos/runtime/Recorder.h"
#include "tests/macos/runtime/Runtime.h"
#include "tests/macos/runtime/Text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using rb::fake::fromUtf16;
using rb::fake::toUtf16;

namespace {

rb::objc::Class* runtimeClass(Class cls) { return (rb::objc::Class*)(__bridge void*)cls; }
std::string utf8(NSString* text) { return text ? text.UTF8String : ""; }
NSString* string(const std::string& text) { return [[NSString alloc] initWithUTF8String:text.c_str()]; }

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

std::string lastComponent(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path.substr(path.rfind('/') == std::string::npos || path == "/" ? 0 : path.rfind('/') + 1);
}

std::string withoutLastComponent(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return "";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string extensionOf(const std::string& path) {
    const std::string name = lastComponent(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
}

std::string joined(std::string path, const std::string& component) {
    if (!path.empty() && path.back() != '/')
        path += '/';
    return path + component;
}

// printf with %@ for objects.
std::string formatted(NSString* format, va_list arguments) {
    std::string result;
    const std::string text = utf8(format);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        std::string directive = "%";
        while (++i < text.size() && !std::strchr("@diuxXcsfgeEGpC%", text[i]))
            directive += text[i];
        const char conversion = i < text.size() ? text[i] : '%';
        directive += conversion;
        const bool isLong = directive.find_first_of("lzqtj") != std::string::npos;
        char buffer[512] = "";
        switch (conversion) {
        case '%':
            result += '%';
            break;
        case '@': {
            id object = va_arg(arguments, id);
            result += object ? utf8([object description]) : "(null)";
            break;
        }
        case 's':
        case 'p':
            std::snprintf(buffer, sizeof buffer, directive.c_str(), va_arg(arguments, void*));
            break;
        case 'f':
        case 'g':
        case 'e':
        case 'E':
        case 'G':
            std::snprintf(buffer, sizeof buffer, directive.c_str(), va_arg(arguments, double));
            break;
        default:
            if (isLong)
                std::snprintf(buffer, sizeof buffer, directive.c_str(), va_arg(arguments, long));
            else
                std::snprintf(buffer, sizeof buffer, directive.c_str(), va_arg(arguments, int));
        }
        result += buffer;
    }
    return result;
}

} // namespace

@interface RBFakeCoreObject : NSObject {
@public
    std::string typeName;
}
@end
@implementation RBFakeCoreObject
@end

@implementation NSObject
+ (void)load {}
+ (void)initialize {}
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
- (void)dealloc {}
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
    const auto found = rb::objc::find(runtimeClass(object_getClass(self)),
                                      reinterpret_cast<const char*>(selector));
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

@implementation NSString {
    std::string text_;
}
+ (instancetype)string {
    return [[self alloc] init];
}
+ (instancetype)stringWithString:(NSString*)other {
    return [[self alloc] initWithUTF8String:other.UTF8String];
}
+ (instancetype)stringWithUTF8String:(const char*)text {
    return [[self alloc] initWithUTF8String:text];
}
+ (instancetype)stringWithCString:(const char*)text encoding:(NSStringEncoding)encoding {
    return [[self alloc] initWithUTF8String:text];
}
+ (instancetype)stringWithFormat:(NSString*)format, ... {
    va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    return [[self alloc] initWithUTF8String:text.c_str()];
}
+ (instancetype)stringWithCharacters:(const unichar*)characters length:(NSUInteger)length {
    return [[self alloc] initWithCharacters:characters length:length];
}
- (instancetype)initWithUTF8String:(const char*)text {
    text_ = text;
    return self;
}
- (instancetype)initWithString:(NSString*)other {
    text_ = utf8(other);
    return self;
}
- (instancetype)initWithFormat:(NSString*)format, ... {
    va_list arguments;
    va_start(arguments, format);
    text_ = formatted(format, arguments);
    va_end(arguments);
    return self;
}
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding {
    text_.assign(static_cast<const char*>(bytes), length);
    return self;
}
- (instancetype)initWithData:(NSData*)data encoding:(NSStringEncoding)encoding {
    text_.assign(static_cast<const char*>(data.bytes), data.length);
    return self;
}
- (instancetype)initWithCharacters:(const unichar*)characters length:(NSUInteger)length {
    text_ = fromUtf16(reinterpret_cast<const char16_t*>(characters), length);
    return self;
}
- (void)replaceText:(const std::string&)text {
    text_ = text;
}
- (const char*)UTF8String {
    return text_.c_str();
}
- (const char*)fileSystemRepresentation {
    return self.UTF8String;
}
- (const char*)cStringUsingEncoding:(NSStringEncoding)encoding {
    return self.UTF8String;
}
- (NSUInteger)length {
    return toUtf16(utf8(self)).size();
}
- (NSUInteger)lengthOfBytesUsingEncoding:(NSStringEncoding)encoding {
    return std::strlen(self.UTF8String);
}
- (unichar)characterAtIndex:(NSUInteger)index {
    return toUtf16(utf8(self)).at(index);
}
- (void)getCharacters:(unichar*)buffer range:(NSRange)range {
    const std::u16string text = toUtf16(utf8(self));
    std::copy_n(text.begin() + static_cast<long>(range.location), range.length, buffer);
}
- (id)copyWithZone:(NSZone*)zone {
    return string(self.UTF8String);
}
- (id)mutableCopyWithZone:(NSZone*)zone {
    return [[NSMutableString alloc] initWithUTF8String:self.UTF8String];
}
- (BOOL)isEqualToString:(NSString*)other {
    return other && std::strcmp(self.UTF8String, other.UTF8String) == 0;
}
- (BOOL)isEqual:(id)other {
    return [other isKindOfClass:NSString.class] && [self isEqualToString:other];
}
- (NSUInteger)hash {
    return std::hash<std::string>()(utf8(self));
}
- (NSComparisonResult)compare:(NSString*)other {
    const int order = std::strcmp(self.UTF8String, other.UTF8String);
    return order < 0 ? NSOrderedAscending : order > 0 ? NSOrderedDescending : NSOrderedSame;
}
- (NSString*)description {
    return self;
}
- (BOOL)hasPrefix:(NSString*)prefix {
    return utf8(self).rfind(utf8(prefix), 0) == 0;
}
- (BOOL)hasSuffix:(NSString*)suffix {
    const std::string text = utf8(self), end = utf8(suffix);
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}
- (BOOL)containsString:(NSString*)part {
    return utf8(self).find(utf8(part)) != std::string::npos;
}
- (NSRange)rangeOfString:(NSString*)part {
    const std::u16string text = toUtf16(utf8(self)), wanted = toUtf16(utf8(part));
    const std::size_t at = text.find(wanted);
    return at == std::u16string::npos ? NSMakeRange(NSNotFound, 0) : NSMakeRange(at, wanted.size());
}
- (NSString*)substringWithRange:(NSRange)range {
    const std::u16string text = toUtf16(utf8(self)).substr(range.location, range.length);
    return string(fromUtf16(text.data(), text.size()));
}
- (NSString*)substringFromIndex:(NSUInteger)index {
    return [self substringWithRange:NSMakeRange(index, self.length - index)];
}
- (NSString*)substringToIndex:(NSUInteger)index {
    return [self substringWithRange:NSMakeRange(0, index)];
}
- (NSString*)stringByAppendingString:(NSString*)other {
    return string(utf8(self) + utf8(other));
}
- (NSString*)stringByAppendingFormat:(NSString*)format, ... {
    va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    return string(utf8(self) + text);
}
- (NSString*)stringByReplacingOccurrencesOfString:(NSString*)wanted withString:(NSString*)replacement {
    std::string text = utf8(self);
    const std::string from = utf8(wanted), to = utf8(replacement);
    for (std::size_t at = text.find(from); at != std::string::npos && !from.empty(); at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return string(text);
}
- (NSArray*)componentsSeparatedByString:(NSString*)separator {
    NSMutableArray* parts = [NSMutableArray array];
    const std::string text = utf8(self), between = utf8(separator);
    std::size_t start = 0;
    for (std::size_t at = text.find(between); at != std::string::npos; at = text.find(between, start)) {
        [parts addObject:string(text.substr(start, at - start))];
        start = at + between.size();
    }
    [parts addObject:string(text.substr(start))];
    return parts;
}
- (NSString*)lowercaseString {
    std::string text = utf8(self);
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return string(text);
}
- (NSString*)uppercaseString {
    std::string text = utf8(self);
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return string(text);
}
- (NSString*)lastPathComponent {
    return string(lastComponent(utf8(self)));
}
- (NSString*)pathExtension {
    return string(extensionOf(utf8(self)));
}
- (NSString*)stringByDeletingLastPathComponent {
    return string(withoutLastComponent(utf8(self)));
}
- (NSString*)stringByAppendingPathComponent:(NSString*)component {
    return string(joined(utf8(self), utf8(component)));
}
- (NSString*)stringByDeletingPathExtension {
    const std::string text = utf8(self), extension = extensionOf(text);
    return string(extension.empty() ? text : text.substr(0, text.size() - extension.size() - 1));
}
- (NSData*)dataUsingEncoding:(NSStringEncoding)encoding {
    return [NSData dataWithBytes:self.UTF8String length:std::strlen(self.UTF8String)];
}
- (int)intValue {
    return std::atoi(self.UTF8String);
}
- (NSInteger)integerValue {
    return std::atol(self.UTF8String);
}
- (double)doubleValue {
    return std::atof(self.UTF8String);
}
- (BOOL)boolValue {
    return std::strchr("YyTt123456789", self.UTF8String[0]) != nullptr && self.UTF8String[0];
}
@end

@implementation NSMutableString
- (void)setString:(NSString*)other {
    [self replaceText:utf8(other)];
}
- (void)appendString:(NSString*)other {
    [self replaceText:utf8(self) + utf8(other)];
}
- (void)appendFormat:(NSString*)format, ... {
    va_list arguments;
    va_start(arguments, format);
    const std::string text = formatted(format, arguments);
    va_end(arguments);
    [self replaceText:utf8(self) + text];
}
@end

// The objects behind @"…"; the layout is the compiler's: after isa the flags, the characters and their number.
@interface RBFakeConstantString : NSString
@end
namespace {
struct ConstantText {
    const void* isa;
    std::uint64_t flags;
    const void* characters;
    std::uint64_t length;
};
} // namespace
@implementation RBFakeConstantString
- (const char*)UTF8String {
    const auto* constant = (__bridge const ConstantText*)self;
    constexpr std::uint64_t isUtf16 = 0x10;
    if (!(constant->flags & isUtf16))
        return static_cast<const char*>(constant->characters);
    // Converted once; constants live as long as the program.
    static auto* converted = new std::map<const void*, std::string>;
    std::string& text = (*converted)[constant];
    if (text.empty())
        text = fromUtf16(static_cast<const char16_t*>(constant->characters), constant->length);
    return text.c_str();
}
- (id)copyWithZone:(NSZone*)zone {
    return self;
}
@end

@implementation NSAttributedString {
    NSString* text_;
    NSDictionary* attributes_;
}
- (instancetype)initWithString:(NSString*)text {
    return [self initWithString:text attributes:nil];
}
- (instancetype)initWithString:(NSString*)text attributes:(NSDictionary*)attributes {
    text_ = [text copy];
    attributes_ = [attributes copy];
    return self;
}
- (instancetype)initWithAttributedString:(NSAttributedString*)other {
    text_ = other->text_;
    attributes_ = other->attributes_;
    return self;
}
- (NSString*)string {
    return text_;
}
- (NSUInteger)length {
    return text_.length;
}
- (NSDictionary*)attributesAtIndex:(NSUInteger)index effectiveRange:(NSRange*)range {
    if (range)
        *range = NSMakeRange(0, self.length);
    return attributes_;
}
- (id)attribute:(NSString*)name atIndex:(NSUInteger)index effectiveRange:(NSRange*)range {
    return [self attributesAtIndex:index effectiveRange:range][name];
}
- (NSString*)description {
    return text_;
}
@end

@implementation NSValue {
    std::string bytes_;
}
+ (instancetype)valueWithBytes:(const void*)bytes size:(std::size_t)size {
    NSValue* value = [[self alloc] init];
    value->bytes_.assign(static_cast<const char*>(bytes), size);
    return value;
}
- (void)copyTo:(void*)target size:(std::size_t)size {
    std::memcpy(target, bytes_.data(), std::min(size, bytes_.size()));
}
+ (NSValue*)valueWithRect:(NSRect)rect {
    return [self valueWithBytes:&rect size:sizeof rect];
}
+ (NSValue*)valueWithPoint:(NSPoint)point {
    return [self valueWithBytes:&point size:sizeof point];
}
+ (NSValue*)valueWithSize:(NSSize)size {
    return [self valueWithBytes:&size size:sizeof size];
}
+ (NSValue*)valueWithRange:(NSRange)range {
    return [self valueWithBytes:&range size:sizeof range];
}
+ (NSValue*)valueWithPointer:(const void*)pointer {
    return [self valueWithBytes:&pointer size:sizeof pointer];
}
+ (NSValue*)valueWithCATransform3D:(CATransform3D)transform {
    return [self valueWithBytes:&transform size:sizeof transform];
}
- (NSRect)rectValue {
    NSRect rect{};
    [self copyTo:&rect size:sizeof rect];
    return rect;
}
- (NSPoint)pointValue {
    NSPoint point{};
    [self copyTo:&point size:sizeof point];
    return point;
}
- (NSSize)sizeValue {
    NSSize size{};
    [self copyTo:&size size:sizeof size];
    return size;
}
- (NSRange)rangeValue {
    NSRange range{};
    [self copyTo:&range size:sizeof range];
    return range;
}
- (void*)pointerValue {
    void* pointer = nullptr;
    [self copyTo:&pointer size:sizeof pointer];
    return pointer;
}
- (CATransform3D)CATransform3DValue {
    CATransform3D transform{};
    [self copyTo:&transform size:sizeof transform];
    return transform;
}
- (BOOL)isEqual:(id)other {
    return [other isKindOfClass:NSValue.class] && bytes_ == ((NSValue*)other)->bytes_;
}
- (NSString*)description {
    std::string text = "{";
    for (std::size_t at = 0; at + sizeof(double) <= bytes_.size(); at += sizeof(double)) {
        double field = 0;
        std::memcpy(&field, bytes_.data() + at, sizeof field);
        char buffer[40];
        std::snprintf(buffer, sizeof buffer, "%s%.10g", at ? ", " : "", field);
        text += buffer;
    }
    return string(text + "}");
}
@end

@implementation NSNumber {
    double real_;
    long integer_;
    char kind_; // B, i or d
}
+ (NSNumber*)withInteger:(long)value kind:(char)kind {
    NSNumber* number = [[self alloc] init];
    number->integer_ = value;
    number->real_ = static_cast<double>(value);
    number->kind_ = kind;
    return number;
}
+ (NSNumber*)numberWithBool:(BOOL)value {
    return [self withInteger:value ? 1 : 0 kind:'B'];
}
+ (NSNumber*)numberWithChar:(char)value {
    return [self withInteger:value kind:'i'];
}
+ (NSNumber*)numberWithShort:(short)value {
    return [self withInteger:value kind:'i'];
}
+ (NSNumber*)numberWithUnsignedShort:(unsigned short)value {
    return [self withInteger:value kind:'i'];
}
+ (NSNumber*)numberWithInt:(int)value {
    return [self withInteger:value kind:'i'];
}
+ (NSNumber*)numberWithUnsignedInt:(unsigned)value {
    return [self withInteger:value kind:'i'];
}
+ (NSNumber*)numberWithLong:(long)value {
    return [self withInteger:value kind:'i'];
}
+ (NSNumber*)numberWithUnsignedLong:(unsigned long)value {
    return [self withInteger:static_cast<long>(value) kind:'i'];
}
+ (NSNumber*)numberWithLongLong:(long long)value {
    return [self withInteger:value kind:'i'];
}
+ (NSNumber*)numberWithUnsignedLongLong:(unsigned long long)value {
    return [self withInteger:static_cast<long>(value) kind:'i'];
}
+ (NSNumber*)numberWithInteger:(NSInteger)value {
    return [self withInteger:value kind:'i'];
}
+ (NSNumber*)numberWithUnsignedInteger:(NSUInteger)value {
    return [self withInteger:static_cast<long>(value) kind:'i'];
}
+ (NSNumber*)numberWithFloat:(float)value {
    return [self numberWithDouble:value];
}
+ (NSNumber*)numberWithDouble:(double)value {
    NSNumber* number = [[self alloc] init];
    number->integer_ = static_cast<long>(value);
    number->real_ = value;
    number->kind_ = 'd';
    return number;
}
- (const char*)objCType {
    return kind_ == 'B' ? "c" : kind_ == 'd' ? "d" : "q";
}
- (BOOL)boolValue {
    return real_ != 0;
}
- (int)intValue {
    return static_cast<int>(integer_);
}
- (unsigned)unsignedIntValue {
    return static_cast<unsigned>(integer_);
}
- (long)longValue {
    return integer_;
}
- (unsigned long)unsignedLongValue {
    return static_cast<unsigned long>(integer_);
}
- (long long)longLongValue {
    return integer_;
}
- (unsigned long long)unsignedLongLongValue {
    return static_cast<unsigned long long>(integer_);
}
- (NSInteger)integerValue {
    return integer_;
}
- (NSUInteger)unsignedIntegerValue {
    return static_cast<NSUInteger>(integer_);
}
- (float)floatValue {
    return static_cast<float>(real_);
}
- (double)doubleValue {
    return real_;
}
- (BOOL)isEqual:(id)other {
    return [other isKindOfClass:NSNumber.class] && real_ == ((NSNumber*)other)->real_ &&
           integer_ == ((NSNumber*)other)->integer_;
}
- (BOOL)isEqualToNumber:(NSNumber*)other {
    return [self isEqual:other];
}
- (NSUInteger)hash {
    return static_cast<NSUInteger>(integer_);
}
- (NSString*)stringValue {
    return self.description;
}
- (NSString*)description {
    char buffer[40];
    if (kind_ == 'd')
        std::snprintf(buffer, sizeof buffer, "%.10g", real_);
    else
        std::snprintf(buffer, sizeof buffer, "%ld", integer_);
    return string(buffer);
}
- (char)fakeKind {
    return kind_;
}
@end

@implementation NSNull
+ (NSNull*)null {
    static NSNull* null = [[NSNull alloc] init];
    return null;
}
@end

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

@implementation NSData {
@public
    std::string bytes_;
}
+ (instancetype)data {
    return [[self alloc] init];
}
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length {
    return [[self alloc] initWithBytes:bytes length:length];
}
+ (instancetype)dataWithBytesNoCopy:(void*)bytes length:(NSUInteger)length freeWhenDone:(BOOL)frees {
    NSData* data = [[self alloc] initWithBytes:bytes length:length];
    if (frees)
        std::free(bytes);
    return data;
}
+ (instancetype)dataWithData:(NSData*)other {
    return [[self alloc] initWithBytes:other.bytes length:other.length];
}
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length {
    bytes_.assign(static_cast<const char*>(bytes), length);
    return self;
}
- (const void*)bytes {
    return bytes_.data();
}
- (NSUInteger)length {
    return bytes_.size();
}
- (void)getBytes:(void*)buffer length:(NSUInteger)length {
    std::memcpy(buffer, bytes_.data(), std::min(length, bytes_.size()));
}
- (id)copyWithZone:(NSZone*)zone {
    return [[NSData alloc] initWithBytes:bytes_.data() length:bytes_.size()];
}
- (BOOL)isEqual:(id)other {
    return [other isKindOfClass:NSData.class] && bytes_ == ((NSData*)other)->bytes_;
}
- (NSString*)description {
    return string("<data of " + std::to_string(bytes_.size()) + " bytes>");
}
@end

@implementation NSMutableData
- (void*)mutableBytes {
    return bytes_.data();
}
- (void)appendBytes:(const void*)bytes length:(NSUInteger)length {
    bytes_.append(static_cast<const char*>(bytes), length);
}
- (void)setLength:(NSUInteger)length {
    bytes_.resize(length);
}
@end

@implementation NSURL {
    std::string scheme_; // "file" or that of a web address
    std::string text_;   // the path of a file, the whole address otherwise
}
+ (NSURL*)withScheme:(const std::string&)scheme text:(const std::string&)text {
    NSURL* url = [[self alloc] init];
    url->scheme_ = scheme;
    url->text_ = text;
    return url;
}
+ (NSURL*)fileURLWithPath:(NSString*)path {
    return [self withScheme:"file" text:utf8(path)];
}
+ (NSURL*)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDirectory {
    return [self fileURLWithPath:path];
}
+ (NSURL*)fileURLWithFileSystemRepresentation:(const char*)path
                                  isDirectory:(BOOL)isDirectory
                                relativeToURL:(NSURL*)base {
    return [self withScheme:"file" text:path];
}
+ (instancetype)URLWithString:(NSString*)text {
    const std::string address = utf8(text);
    const std::size_t colon = address.find(':');
    if (colon == std::string::npos)
        return nil;
    if (address.rfind("file://", 0) == 0)
        return [self withScheme:"file" text:address.substr(7)];
    return [self withScheme:address.substr(0, colon) text:address];
}
- (instancetype)initFileURLWithPath:(NSString*)path {
    scheme_ = "file";
    text_ = utf8(path);
    return self;
}
- (BOOL)isFileURL {
    return scheme_ == "file";
}
- (NSString*)scheme {
    return string(scheme_);
}
- (NSString*)path {
    return string(text_);
}
- (const char*)fileSystemRepresentation {
    return text_.c_str();
}
- (NSString*)absoluteString {
    return string(self.isFileURL ? "file://" + text_ : text_);
}
- (NSString*)lastPathComponent {
    return string(lastComponent(text_));
}
- (NSString*)pathExtension {
    return string(extensionOf(text_));
}
- (NSURL*)URLByAppendingPathComponent:(NSString*)component {
    return [NSURL withScheme:scheme_ text:joined(text_, utf8(component))];
}
- (NSURL*)URLByAppendingPathComponent:(NSString*)component isDirectory:(BOOL)isDirectory {
    return [self URLByAppendingPathComponent:component];
}
- (NSURL*)URLByDeletingLastPathComponent {
    return [NSURL withScheme:scheme_ text:withoutLastComponent(text_)];
}
- (NSURL*)URLByStandardizingPath {
    return self;
}
- (BOOL)isEqual:(id)other {
    return [other isKindOfClass:NSURL.class] && text_ == ((NSURL*)other)->text_ && scheme_ == ((NSURL*)other)->scheme_;
}
- (NSUInteger)hash {
    return std::hash<std::string>()(text_);
}
- (NSString*)description {
    return self.absoluteString;
}
@end

@implementation NSError {
    NSString* domain_;
    NSInteger code_;
    NSDictionary* info_;
}
+ (instancetype)errorWithDomain:(NSString*)domain code:(NSInteger)code userInfo:(NSDictionary*)info {
    NSError* error = [[self alloc] init];
    error->domain_ = [domain copy];
    error->code_ = code;
    error->info_ = [info copy];
    return error;
}
- (NSString*)domain {
    return domain_;
}
- (NSInteger)code {
    return code_;
}
- (NSDictionary*)userInfo {
    return info_ ?: @{};
}
- (NSString*)localizedDescription {
    return info_[NSLocalizedDescriptionKey] ?: string(utf8(domain_) + " " + std::to_string(code_));
}
- (NSString*)description {
    return self.localizedDescription;
}
@end

@implementation NSDate {
    double since1970_;
}
// The fake clock started with 2001, as reference dates do.
static constexpr double secondsUntil2001 = 978307200;
+ (instancetype)date {
    return [self dateWithTimeIntervalSince1970:secondsUntil2001 + rb::fake::now()];
}
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)seconds {
    NSDate* date = [[self alloc] init];
    date->since1970_ = seconds;
    return date;
}
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)seconds {
    return [self dateWithTimeIntervalSince1970:secondsUntil2001 + rb::fake::now() + seconds];
}
+ (NSTimeInterval)timeIntervalSinceReferenceDate {
    return rb::fake::now();
}
- (NSTimeInterval)timeIntervalSince1970 {
    return since1970_;
}
- (NSTimeInterval)timeIntervalSinceReferenceDate {
    return since1970_ - secondsUntil2001;
}
- (NSTimeInterval)timeIntervalSinceNow {
    return since1970_ - secondsUntil2001 - rb::fake::now();
}
- (NSTimeInterval)timeIntervalSinceDate:(NSDate*)other {
    return since1970_ - other->since1970_;
}
@end

namespace rb::fake {

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
        return [object fakeKind] == 'B' ? ([object boolValue] ? "@YES" : "@NO") : "@" + utf8([object description]);
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
    rb::fake::recordFunction("NSLog", "@\"" + formatted(format, arguments) + "\"");
    va_end(arguments);
}
NSString* NSStringFromClass(Class cls) { return string(class_getName(cls)); }
NSString* NSStringFromSelector(SEL selector) { return string(sel_getName(selector)); }
Class NSClassFromString(NSString* name) { return objc_getClass(name.UTF8String); }
SEL NSSelectorFromString(NSString* name) { return sel_registerName(name.UTF8String); }
NSString* NSHomeDirectory(void) { return @"/Users/test"; }

// Toll-free bridging: a CoreFoundation object is the Foundation object.
CFTypeRef CFRetain(CFTypeRef object) {
    return rb::objc::retain((rb::objc::Object*)const_cast<void*>(object));
}
void CFRelease(CFTypeRef object) { rb::objc::release((rb::objc::Object*)const_cast<void*>(object)); }
CFTypeRef CFAutorelease(CFTypeRef object) {
    return rb::objc::autorelease((rb::objc::Object*)const_cast<void*>(object));
}
id CFBridgingRelease(CFTypeRef object) { return (__bridge_transfer id) const_cast<void*>(object); }
CFTypeRef CFBridgingRetain(id object) { return (__bridge_retained CFTypeRef)object; }
CFIndex CFArrayGetCount(CFArrayRef array) { return (CFIndex)((__bridge NSArray*)array).count; }
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    return (__bridge const void*)((__bridge NSArray*)array)[(NSUInteger)index];
}
void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
    [(__bridge NSMutableArray*)array addObject:(__bridge id) const_cast<void*>(value)];
}
CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) { return (CFIndex)((__bridge NSDictionary*)dictionary).count; }
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
CFIndex CFStringGetLength(CFStringRef text) { return (CFIndex)((__bridge NSString*)text).length; }
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
CFIndex CFDataGetLength(CFDataRef data) { return (CFIndex)((__bridge NSData*)data).length; }
CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
    return (__bridge_retained CFDataRef)[NSData dataWithBytes:bytes length:(NSUInteger)length];
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
