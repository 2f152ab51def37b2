#include "desktops/macos/FileOperations.h"

#include "desktops/macos/Bridge.h"

#import <Foundation/Foundation.h>

namespace rb {

namespace {

FileFailure failureFrom(NSError* error) {
    const bool exists = [error.domain isEqual:NSCocoaErrorDomain] && error.code == NSFileWriteFileExistsError;
    return {.targetExists = exists, .reason = utf8String(error.localizedDescription)};
}

NSURL* url(const std::string& path) {
    return [NSURL fileURLWithPath:nsString(path)];
}

} // namespace

std::optional<FileFailure> MacFileOperations::moveItem(const std::string& from, const std::string& to) {
    NSError* error = nil;
    if ([NSFileManager.defaultManager moveItemAtURL:url(from) toURL:url(to) error:&error]) {
        return std::nullopt;
    }
    return failureFrom(error);
}

std::optional<FileFailure> MacFileOperations::copyItem(const std::string& from, const std::string& to) {
    NSError* error = nil;
    if ([NSFileManager.defaultManager copyItemAtURL:url(from) toURL:url(to) error:&error]) {
        return std::nullopt;
    }
    return failureFrom(error);
}

SharedBytes MacFileOperations::contents(const std::string& path) const {
    NSData* data = [NSData dataWithContentsOfFile:nsString(path)];
    if (data == nil) {
        return nullptr;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(data.bytes);
    return std::make_shared<const Bytes>(bytes, bytes + data.length);
}

std::optional<FileFailure> MacFileOperations::trashItem(const std::string& path) {
    NSError* error = nil;
    if ([NSFileManager.defaultManager trashItemAtURL:url(path) resultingItemURL:nil error:&error]) {
        return std::nullopt;
    }
    return failureFrom(error);
}

} // namespace rb
