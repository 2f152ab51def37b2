#include "desktops/macos/Archives.h"

#include "desktops/macos/Bridge.h"

#import <Foundation/Foundation.h>

#include <utility>

// Stands in archives for an object of the product's; its class takes the product's name there.
@interface RBMacArchivedObject : NSObject <NSSecureCoding>
@property(nonatomic) rb::ArchiveObject values;
@end

// Tells the objects that are being decoded which keys they have.
@interface RBMacArchiveReading : NSObject <NSKeyedUnarchiverDelegate>
@property(nonatomic) rb::ArchiveClass objectClass;
@end

@implementation RBMacArchiveReading {
    rb::ArchiveClass _objectClass;
}
@synthesize objectClass = _objectClass;
@end

namespace rb {

namespace {

id archivedObject(const ArchiveValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        return textFrom(*text);
    }
    if (const auto* data = std::get_if<SharedBlob>(&value); data != nullptr && *data) {
        // Always in memory here.
        const SharedBytes bytes = (*data)->bytes();
        return [NSData dataWithBytes:bytes->data() length:bytes->size()];
    }
    if (const auto* texts = std::get_if<std::vector<std::string>>(&value)) {
        NSMutableArray<NSString*>* array = [NSMutableArray array];
        for (const std::string& text : *texts) {
            [array addObject:textFrom(text)];
        }
        return [array copy];
    }
    if (const auto* date = std::get_if<ArchiveDate>(&value)) {
        return [NSDate dateWithTimeIntervalSince1970:date->seconds];
    }
    return nil;
}

ArchiveValue decodedValue(NSCoder* coder, NSString* key, ArchiveKind kind) {
    switch (kind) {
    case ArchiveKind::Integer:
        return static_cast<std::int64_t>([coder decodeIntegerForKey:key]);
    case ArchiveKind::String: {
        NSString* text = [coder decodeObjectOfClass:NSString.class forKey:key];
        return text != nil ? ArchiveValue(wholeText(text)) : ArchiveValue();
    }
    case ArchiveKind::Data: {
        NSData* data = [coder decodeObjectOfClass:NSData.class forKey:key];
        const auto* bytes = static_cast<const std::uint8_t*>(data.bytes);
        return data != nil ? ArchiveValue(std::make_shared<const Blob>(
                                 std::make_shared<const Bytes>(bytes, bytes + data.length)))
                           : ArchiveValue();
    }
    case ArchiveKind::Strings: {
        NSArray<NSString*>* array = [coder decodeArrayOfObjectsOfClass:NSString.class forKey:key];
        if (array == nil) {
            return {};
        }
        std::vector<std::string> texts;
        for (NSString* text in array) {
            texts.push_back(wholeText(text));
        }
        return texts;
    }
    case ArchiveKind::Date: {
        NSDate* date = [coder decodeObjectOfClass:NSDate.class forKey:key];
        return date != nil ? ArchiveValue(ArchiveDate{date.timeIntervalSince1970}) : ArchiveValue();
    }
    }
    return {};
}

} // namespace

} // namespace rb

@implementation RBMacArchivedObject {
    rb::ArchiveObject _values;
}
@synthesize values = _values;

+ (BOOL)supportsSecureCoding {
    return YES;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    for (const auto& [key, value] : _values) {
        if (const auto* integer = std::get_if<std::int64_t>(&value)) {
            [coder encodeInteger:*integer forKey:rb::nsString(key)];
        } else {
            [coder encodeObject:rb::archivedObject(value) forKey:rb::nsString(key)];
        }
    }
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    self = [super init];
    if (self != nil) {
        const auto reading = (RBMacArchiveReading*)((NSKeyedUnarchiver*)coder).delegate;
        for (const auto& [key, kind] : reading.objectClass.keys) {
            rb::ArchiveValue value = rb::decodedValue(coder, rb::nsString(key), kind);
            if (!std::holds_alternative<std::monostate>(value)) {
                _values.insert_or_assign(key, std::move(value));
            }
        }
    }
    return self;
}

@end

namespace rb {

std::string MacArchives::location(const std::string& fileName) {
    NSURL* support = [NSFileManager.defaultManager URLsForDirectory:NSApplicationSupportDirectory
                                                          inDomains:NSUserDomainMask]
                         .firstObject;
    NSURL* folder = [support URLByAppendingPathComponent:@"Rook Bay" isDirectory:YES];
    if (folder == nil) {
        return {};
    }
    [NSFileManager.defaultManager createDirectoryAtURL:folder
                           withIntermediateDirectories:YES
                                            attributes:@{
                                                NSFilePosixPermissions : @0700
                                            }
                                                 error:nil];
    return utf8String([folder URLByAppendingPathComponent:nsString(fileName)].path);
}

std::optional<std::vector<ArchiveObject>> MacArchives::read(const std::string& path, const ArchiveClass& objectClass) {
    NSString* file = nsString(path);
    NSData* data = [NSData dataWithContentsOfFile:file];
    if (data == nil) {
        return std::nullopt;
    }
    NSKeyedUnarchiver* unarchiver = [[NSKeyedUnarchiver alloc] initForReadingFromData:data error:nil];
    RBMacArchiveReading* reading = [[RBMacArchiveReading alloc] init];
    reading.objectClass = objectClass;
    unarchiver.delegate = reading;
    unarchiver.requiresSecureCoding = YES;
    // Else a wrong class would raise.
    unarchiver.decodingFailurePolicy = NSDecodingFailurePolicySetErrorAndReturn;
    [unarchiver setClass:RBMacArchivedObject.class forClassName:nsString(objectClass.name)];
    NSSet* classes = [NSSet setWithArray:@[ NSArray.class, RBMacArchivedObject.class ]];
    id root = [unarchiver decodeObjectOfClasses:classes forKey:NSKeyedArchiveRootObjectKey];
    [unarchiver finishDecoding];
    unarchiver.delegate = nil;
    if (![root isKindOfClass:NSArray.class]) {
        const std::string other =
            path + ".broken-" + std::to_string(static_cast<long long>(NSDate.date.timeIntervalSince1970));
        if ([NSFileManager.defaultManager moveItemAtPath:file toPath:nsString(other) error:nil]) {
            log_.write(path + " is not valid; it is kept as " + other);
        }
        return std::nullopt;
    }
    std::vector<ArchiveObject> objects;
    for (id element in (NSArray*)root) {
        if ([element isKindOfClass:RBMacArchivedObject.class]) {
            objects.push_back(((RBMacArchivedObject*)element).values);
        }
    }
    return objects;
}

bool MacArchives::write(const std::string& path, const ArchiveClass& objectClass,
                        const std::vector<ArchiveObject>& objects) {
    NSMutableArray<RBMacArchivedObject*>* root = [NSMutableArray array];
    for (const ArchiveObject& object : objects) {
        RBMacArchivedObject* archived = [[RBMacArchivedObject alloc] init];
        archived.values = object;
        [root addObject:archived];
    }
    NSKeyedArchiver* archiver = [[NSKeyedArchiver alloc] initRequiringSecureCoding:YES];
    [archiver setClassName:nsString(objectClass.name) forClass:RBMacArchivedObject.class];
    // An immutable array, so that its class in the archive is the plain one.
    [archiver encodeObject:[root copy] forKey:NSKeyedArchiveRootObjectKey];
    NSString* file = nsString(path);
    if (![archiver.encodedData writeToFile:file options:NSDataWritingAtomic error:nil]) {
        return false;
    }
    [NSFileManager.defaultManager setAttributes:@{NSFilePosixPermissions : @0600} ofItemAtPath:file error:nil];
    return true;
}

} // namespace rb
