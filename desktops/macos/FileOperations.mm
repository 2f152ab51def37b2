#include "desktops/macos/FileOperations.h"

#include "desktops/macos/Bridge.h"
#include "platform/Files.h"
#include "platform/RunLoop.h"

#import <Foundation/Foundation.h>

#include <memory>
#include <utility>

namespace rb {

namespace {

FileFailure failureFrom(NSError* error) {
    const bool exists = [error.domain isEqual:NSCocoaErrorDomain] && error.code == NSFileWriteFileExistsError;
    return {.targetExists = exists, .reason = utf8String(error.localizedDescription)};
}

NSURL* url(const std::string& path) {
    return [NSURL fileURLWithPath:nsString(path)];
}

// Then a move is a rename. What isn't there counts, too: it fails at once.
bool onOneVolume(const std::string& from, const std::string& to) {
    NSFileManager* manager = NSFileManager.defaultManager;
    NSString* folder = nsString(to).stringByDeletingLastPathComponent;
    NSNumber* source = [manager attributesOfItemAtPath:nsString(from) error:nil][NSFileSystemNumber];
    NSNumber* target = [manager attributesOfItemAtPath:folder error:nil][NSFileSystemNumber];
    return source == nil || target == nil || [source isEqualToNumber:target];
}

// Off the main thread. The copy gets its name only when it is whole.
std::optional<FileFailure> copyByWayOfAFolder(const std::string& from, const std::string& to) {
    NSFileManager* manager = NSFileManager.defaultManager;
    NSError* error = nil;
    NSURL* aside = [manager URLForDirectory:NSItemReplacementDirectory
                                   inDomain:NSUserDomainMask
                          appropriateForURL:url(to)
                                     create:YES
                                      error:&error];
    if (aside == nil) {
        return failureFrom(error);
    }
    const std::string copy = appendingPathComponent(utf8String(aside.path), lastPathComponent(to));
    std::optional<FileFailure> failure;
    if (![manager copyItemAtURL:url(from) toURL:url(copy) error:&error]) {
        failure = failureFrom(error);
    } else if (![manager contentsEqualAtPath:nsString(from) andPath:nsString(copy)]) {
        failure = FileFailure{.reason = "the copy differs from its source"};
    } else if (![manager moveItemAtURL:url(copy) toURL:url(to) error:&error]) {
        failure = failureFrom(error);
    }
    [manager removeItemAtURL:aside error:nil];
    return failure;
}

// Off the main thread.
std::optional<FileFailure> moveByCopy(const std::string& from, const std::string& to) {
    NSFileManager* manager = NSFileManager.defaultManager;
    if (![manager isDeletableFileAtPath:nsString(from)]) {
        return FileFailure{.reason = "the source can't be removed"};
    }
    if (auto failure = copyByWayOfAFolder(from, to)) {
        return failure;
    }
    // Whatever of it stays now, the copy is whole and in its place.
    [manager removeItemAtURL:url(from) error:nil];
    return std::nullopt;
}

void tell(const FileOperations::Done& done, const std::optional<FileFailure>& failure) {
    if (done) {
        done(failure);
    }
}

} // namespace

void MacFileOperations::inBackground(std::function<std::optional<FileFailure>()> work, Done done) {
    // What is told lives and dies on the main thread: it goes there and back in a box of its own.
    const auto box = std::make_shared<std::shared_ptr<Done>>(std::make_shared<Done>(std::move(done)));
    loop_.background(QualityOfService::UserInitiated, [&loop = loop_, work = std::move(work), box] {
        loop.post([done = std::exchange(*box, nullptr), failure = work()] { tell(*done, failure); });
    });
}

void MacFileOperations::moveItem(const std::string& from, const std::string& to, Done done) {
    if (!onOneVolume(from, to)) {
        inBackground([from, to] { return moveByCopy(from, to); }, std::move(done));
        return;
    }
    NSError* error = nil;
    const BOOL moved = [NSFileManager.defaultManager moveItemAtURL:url(from) toURL:url(to) error:&error];
    tell(done, moved ? std::nullopt : std::optional(failureFrom(error)));
}

void MacFileOperations::copyItem(const std::string& from, const std::string& to, Done done) {
    inBackground([from, to] { return copyByWayOfAFolder(from, to); }, std::move(done));
}

SharedBytes MacFileOperations::contents(const std::string& path) const {
    NSData* data = [NSData dataWithContentsOfFile:nsString(path)];
    if (data == nil) {
        return nullptr;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(data.bytes);
    return std::make_shared<const Bytes>(bytes, bytes + data.length);
}

void MacFileOperations::trashItem(const std::string& path, Done done) {
    NSError* error = nil;
    const BOOL trashed = [NSFileManager.defaultManager trashItemAtURL:url(path) resultingItemURL:nil error:&error];
    tell(done, trashed ? std::nullopt : std::optional(failureFrom(error)));
}

} // namespace rb
