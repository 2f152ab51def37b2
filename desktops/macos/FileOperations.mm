#include "desktops/macos/FileOperations.h"

#include "desktops/macos/Bridge.h"
#include "platform/Files.h"
#include "platform/RunLoop.h"

#import <Foundation/Foundation.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
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

class MacOpenedFile final : public OpenedFile {
public:
    // Takes the descriptor.
    MacOpenedFile(int fd, const struct stat& facts)
        : fd_(fd)
        , facts_(facts) {}
    ~MacOpenedFile() override { close(fd_); }
    MacOpenedFile(const MacOpenedFile&) = delete;
    MacOpenedFile& operator=(const MacOpenedFile&) = delete;

    SharedBytes contents(const std::atomic<bool>& givenUp) const override {
        constexpr std::size_t piece = 1'048'576;
        Bytes bytes(static_cast<std::size_t>(facts_.st_size));
        for (std::size_t have = 0; have < bytes.size();) {
            const ssize_t count = givenUp ? 0
                                          : pread(fd_, bytes.data() + have, std::min(piece, bytes.size() - have),
                                                  static_cast<off_t>(have));
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return nullptr;
            }
            have += static_cast<std::size_t>(count);
        }
        struct stat now {};
        const bool same = fstat(fd_, &now) == 0 && now.st_size == facts_.st_size && now.st_mtime == facts_.st_mtime;
        return same ? std::make_shared<const Bytes>(std::move(bytes)) : nullptr;
    }

private:
    int fd_;
    struct stat facts_;
};

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

std::shared_ptr<const OpenedFile> MacFileOperations::open(const std::string& path, std::size_t mostBytes) const {
    // A pipe must not keep us waiting.
    const int fd = ::open(nsString(path).fileSystemRepresentation, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return nullptr;
    }
    struct stat facts {};
    const bool known = fstat(fd, &facts) == 0;
    auto file = std::make_shared<const MacOpenedFile>(fd, facts);
    const bool taken = known && S_ISREG(facts.st_mode) && static_cast<std::uint64_t>(facts.st_size) <= mostBytes;
    return taken ? std::move(file) : nullptr;
}

void MacFileOperations::trashItem(const std::string& path, Done done) {
    NSError* error = nil;
    const BOOL trashed = [NSFileManager.defaultManager trashItemAtURL:url(path) resultingItemURL:nil error:&error];
    tell(done, trashed ? std::nullopt : std::optional(failureFrom(error)));
}

} // namespace rb
