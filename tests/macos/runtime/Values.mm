// Numbers, structures in objects, data, URLs, errors and dates.
#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>

#include "tests/macos/Fakes.h"
#include "tests/macos/runtime/Foundation.h"
#include "tests/macos/runtime/Text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace rb::fake;

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
@end

@implementation NSNull
+ (NSNull*)null {
    static NSNull* null = [[NSNull alloc] init];
    return null;
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
