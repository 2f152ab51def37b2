#include "desktops/linux/TreeCopy.h"

#include "desktops/linux/UniqueFd.h"
#include "helpers/shared/WriteAll.h"
#include "platform/Files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/xattr.h>
#include <unistd.h>

namespace rb {

namespace {

constexpr int deepest = 200; // folders within folders
constexpr mode_t ownerOnly = 0600;
constexpr mode_t folderOwnerOnly = 0700;
constexpr mode_t permissions = 07777;

using Buffer = std::array<char, 1U << 16U>;

// As many bytes as there are, up to the buffer's size; -1 for an error.
ssize_t readFull(int file, Buffer& buffer, off_t offset) {
    std::size_t have = 0;
    while (have < buffer.size()) {
        const ssize_t count =
            pread(file, buffer.data() + have, buffer.size() - have, offset + static_cast<off_t>(have));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return -1;
        }
        if (count == 0) {
            break;
        }
        have += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(have);
}

int sameContents(int a, int b, const std::atomic<bool>& cancelled) {
    const auto first = std::make_unique<Buffer>();
    const auto second = std::make_unique<Buffer>();
    for (off_t offset = 0;; offset += static_cast<off_t>(first->size())) {
        if (cancelled) {
            return ECANCELED;
        }
        const ssize_t count = readFull(a, *first, offset);
        if (count < 0 || readFull(b, *second, offset) != count ||
            std::memcmp(first->data(), second->data(), static_cast<std::size_t>(count)) != 0) {
            return EIO;
        }
        if (static_cast<std::size_t>(count) < first->size()) {
            return 0;
        }
    }
}

bool isAccessList(const char* name) {
    return std::strcmp(name, "system.posix_acl_access") == 0 || std::strcmp(name, "system.posix_acl_default") == 0;
}

// Marks that programs left on the file, and who else may use it; a file system without them keeps none. False when a
// list of who may use it couldn't be kept.
bool copyAttributes(int from, int to) {
    bool listsKept = true;
    std::array<char, 65536> names{};
    const ssize_t length = flistxattr(from, names.data(), names.size());
    for (ssize_t at = 0; at < length; at += static_cast<ssize_t>(std::strlen(names.data() + at)) + 1) {
        const char* name = names.data() + at;
        const bool list = isAccessList(name);
        if (!list && std::strncmp(name, "user.", 5) != 0) {
            continue;
        }
        std::array<char, 65536> value{};
        const ssize_t size = fgetxattr(from, name, value.data(), value.size());
        const bool kept = size >= 0 && fsetxattr(to, name, value.data(), static_cast<std::size_t>(size), 0) == 0;
        listsKept = listsKept && (kept || !list);
    }
    return listsKept;
}

// Attributes, permissions and times of the one that `facts` are of; `extra` are permissions that it gets besides.
int applyFacts(int from, int to, const struct stat& facts, mode_t extra = 0) {
    mode_t mode = facts.st_mode & permissions;
    if (!copyAttributes(from, to)) {
        // With such a list, the group's permissions are the most that anybody in it has.
        mode &= ~static_cast<mode_t>(S_IRWXG);
    }
    // A program that runs as its owner or group must not run as somebody else.
    struct stat own {};
    if (fstat(to, &own) != 0) {
        return errno;
    }
    if (own.st_uid != facts.st_uid) {
        mode &= ~static_cast<mode_t>(S_ISUID);
    }
    if (own.st_gid != facts.st_gid && fchown(to, static_cast<uid_t>(-1), facts.st_gid) != 0) {
        mode &= ~static_cast<mode_t>(S_ISGID);
    }
    // A file system without permissions (a memory stick's) can't keep them.
    if (fchmod(to, mode | extra) != 0 && errno != EPERM && errno != ENOTSUP) {
        return errno;
    }
    const std::array<timespec, 2> times{facts.st_atim, facts.st_mtim};
    futimens(to, times.data());
    return 0;
}

// Where a file with holes has nothing, its copy has nothing either.
bool isHole(const struct stat& facts, const Buffer& buffer, std::size_t count) {
    constexpr off_t blockSize = 512; // the unit of st_blocks on every file system
    return facts.st_blocks * blockSize < facts.st_size &&
           std::all_of(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count),
                       [](char byte) { return byte == 0; });
}

bool sameEntry(const struct stat& a, const struct stat& b) {
    return a.st_ino == b.st_ino && a.st_dev == b.st_dev;
}

bool sameState(const struct stat& a, const struct stat& b) {
    return sameEntry(a, b) && a.st_size == b.st_size && a.st_mtim.tv_sec == b.st_mtim.tv_sec &&
           a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

} // namespace

int TreeCopy::make(const std::string& from, const std::string& to) {
    from_ = from;
    to_ = to;
    if (stat(deletingLastPathComponent(to).c_str(), &workshop_) != 0) {
        return errno;
    }
    return copyEntry("", 0);
}

void TreeCopy::finish(const std::string& root) const {
    const struct stat& facts = entries_.front().facts;
    if (!S_ISDIR(facts.st_mode)) {
        return;
    }
    const UniqueFd made(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat own {};
    if (made && fstat(made.get(), &own) == 0) {
        fchmod(made.get(), (own.st_mode & permissions & ~folderOwnerOnly) | (facts.st_mode & folderOwnerOnly));
    }
}

int TreeCopy::copyEntry(const std::string& path, int depth) {
    if (cancelled_) {
        return ECANCELED;
    }
    struct stat facts {};
    if (lstat((from_ + path).c_str(), &facts) != 0) {
        return errno;
    }
    if (depth > deepest) {
        return ELOOP;
    }
    if (sameEntry(facts, workshop_)) {
        return EINVAL; // a folder that is to be copied into itself, by way of a link
    }
    entries_.push_back({path, facts});
    if (S_ISDIR(facts.st_mode)) {
        return copyFolder(path, facts, depth);
    }
    if (S_ISLNK(facts.st_mode)) {
        return copyLink(path, facts);
    }
    return S_ISREG(facts.st_mode) ? copyFile(path, facts) : EOPNOTSUPP;
}

int TreeCopy::copyFolder(const std::string& path, const struct stat& facts, int depth) {
    if (mkdir((to_ + path).c_str(), folderOwnerOnly) != 0) {
        return errno;
    }
    const UniqueFd source(open((from_ + path).c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (source.get() < 0) {
        return errno;
    }
    const int stream = fcntl(source.get(), F_DUPFD_CLOEXEC, 0);
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(stream < 0 ? nullptr : fdopendir(stream), &closedir);
    if (!folder) {
        return errno;
    }
    errno = 0;
    // The stream is ours alone.
    while (const dirent* entry = readdir(folder.get())) { // NOLINT(concurrency-mt-unsafe)
        const std::string name = entry->d_name;
        if (name != "." && name != "..") {
            if (const int error = copyEntry(appendingPathComponent(path, name), depth + 1); error != 0) {
                return error;
            }
        }
        errno = 0;
    }
    if (errno != 0) {
        return errno;
    }
    const UniqueFd made(open((to_ + path).c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (made.get() < 0) {
        return errno;
    }
    // The topmost is still to be renamed.
    if (const int error = applyFacts(source.get(), made.get(), facts, depth == 0 ? folderOwnerOnly : 0); error != 0) {
        return error;
    }
    // What lies in it isn't as lasting as the source before the folder is.
    return fsync(made.get()) == 0 || errno == EINVAL ? 0 : errno;
}

int TreeCopy::copyFile(const std::string& path, const struct stat& facts) const {
    const UniqueFd source(open((from_ + path).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (source.get() < 0) {
        return errno;
    }
    const UniqueFd target(open((to_ + path).c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
    if (target.get() < 0) {
        return errno;
    }
    const auto buffer = std::make_unique<Buffer>();
    off_t offset = 0;
    for (;;) {
        if (cancelled_) {
            return ECANCELED;
        }
        const ssize_t count = readFull(source.get(), *buffer, offset);
        if (count < 0) {
            return errno;
        }
        if (count == 0) {
            break;
        }
        const auto size = static_cast<std::size_t>(count);
        const bool done = isHole(facts, *buffer, size) ? lseek(target.get(), count, SEEK_CUR) >= 0
                                                       : writeAll(target.get(), {buffer->data(), size});
        if (!done) {
            return errno;
        }
        offset += count;
    }
    // It may end with a hole.
    if (ftruncate(target.get(), offset) != 0) {
        return errno;
    }
    if (const int error = applyFacts(source.get(), target.get(), facts); error != 0) {
        return error;
    }
    if (fsync(target.get()) != 0) {
        return errno;
    }
    struct stat now {};
    if (fstat(source.get(), &now) != 0 || !sameState(now, facts)) {
        return EBUSY; // somebody writes to it
    }
    return sameContents(source.get(), target.get(), cancelled_);
}

int TreeCopy::copyLink(const std::string& path, const struct stat& facts) const {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlink((from_ + path).c_str(), target.data(), target.size() - 1);
    if (length < 0) {
        return errno;
    }
    if (symlink(target.data(), (to_ + path).c_str()) != 0) {
        return errno;
    }
    const std::array<timespec, 2> times{facts.st_atim, facts.st_mtim};
    utimensat(AT_FDCWD, (to_ + path).c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
    return 0;
}

bool TreeCopy::isUnchanged(const Entry& entry) const {
    struct stat now {};
    if (lstat((from_ + entry.path).c_str(), &now) != 0) {
        return false;
    }
    // A folder changes as its files go; it is removed only when empty anyway.
    return S_ISDIR(entry.facts.st_mode) ? sameEntry(now, entry.facts) : sameState(now, entry.facts);
}

int TreeCopy::removeSource() {
    struct stat now {};
    if (lstat(from_.c_str(), &now) != 0 && errno == ENOENT) {
        removedAny_ = true; // by somebody else: the copy is all that is left
        return 0;
    }
    // Nothing is touched unless all of it is as it was copied.
    for (const Entry& entry : entries_) {
        if (!isUnchanged(entry)) {
            return EBUSY;
        }
        if (S_ISDIR(entry.facts.st_mode) && access((from_ + entry.path).c_str(), W_OK | X_OK) != 0) {
            return errno;
        }
    }
    int error = 0;
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        const std::string path = from_ + entry->path;
        const bool removed = isUnchanged(*entry) &&
                             (S_ISDIR(entry->facts.st_mode) ? rmdir(path.c_str()) == 0 : unlink(path.c_str()) == 0);
        if (removed) {
            removedAny_ = true;
        } else {
            error = errno != 0 ? errno : EBUSY;
        }
    }
    return error;
}

void TreeCopy::removeCopyAt(const std::string& root) {
    // Nothing can be removed from a folder that may not be written.
    for (const Entry& entry : entries_) {
        if (S_ISDIR(entry.facts.st_mode)) {
            chmod((root + entry.path).c_str(), folderOwnerOnly);
        }
    }
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        const std::string path = root + entry->path;
        if (S_ISDIR(entry->facts.st_mode)) {
            rmdir(path.c_str());
        } else {
            unlink(path.c_str());
        }
    }
}

} // namespace rb
