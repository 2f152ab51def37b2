// Text.
#import <AppKit/AppKit.h>

#include "tests/macos/runtime/Foundation.h"
#include "tests/macos/runtime/Text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

using namespace rb::fake;

namespace rb::fake {

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

} // namespace rb::fake

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
    for (std::size_t at = text.find(from); at != std::string::npos && !from.empty();
         at = text.find(from, at + to.size()))
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
- (NSData*)dataUsingEncoding:(NSStringEncoding)encoding allowLossyConversion:(BOOL)lossy {
    return [self dataUsingEncoding:encoding];
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
