#include "tests/linux/kill/KilledWrites.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace rb {

namespace {

int changesLeft = 0;
bool lastIsTorn = false;
int writesUntilFull = 0;

bool isFull() {
    if (writesUntilFull > 1) {
        --writesUntilFull;
        return false;
    }
    return writesUntilFull == 1;
}

template <typename Result>
Result changed(Result result) {
    if (changesLeft > 0 && --changesLeft == 0) {
        raise(SIGKILL);
    }
    return result;
}

} // namespace

void killAfterChange(int number, bool torn) {
    changesLeft = number;
    lastIsTorn = torn;
}

void fillDiskBeforeWrite(int number) {
    writesUntilFull = number;
}

} // namespace rb

// The linker sends calls of NAME to __wrap_NAME, and __real_NAME to the library's own.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl50-cpp,cppcoreguidelines-pro-type-vararg)
extern "C" {
ssize_t __real_write(int file, const void* bytes, std::size_t count);
int __real_open(const char* path, int flags, ...);
int __real_openat(int folder, const char* path, int flags, ...);
int __real_rename(const char* from, const char* to);
int __real_renameat(int fromFolder, const char* from, int toFolder, const char* to);
int __real_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags);
int __real_unlink(const char* path);
int __real_unlinkat(int folder, const char* path, int flags);
int __real_mkdir(const char* path, mode_t mode);
int __real_fchmod(int file, mode_t mode);

ssize_t __wrap_write(int file, const void* bytes, std::size_t count) {
    if (rb::isFull()) {
        errno = ENOSPC;
        return -1;
    }
    const bool cut = rb::changesLeft == 1 && rb::lastIsTorn;
    return rb::changed(__real_write(file, bytes, cut ? count / 2 : count));
}

int __wrap_open(const char* path, int flags, ...) {
    if ((flags & O_CREAT) == 0) {
        return __real_open(path, flags);
    }
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return rb::changed(__real_open(path, flags, mode));
}

int __wrap_openat(int folder, const char* path, int flags, ...) {
    if ((flags & O_CREAT) == 0) {
        return __real_openat(folder, path, flags);
    }
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return rb::changed(__real_openat(folder, path, flags, mode));
}

int __wrap_rename(const char* from, const char* to) {
    return rb::changed(__real_rename(from, to));
}
int __wrap_renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    return rb::changed(__real_renameat(fromFolder, from, toFolder, to));
}
int __wrap_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    return rb::changed(__real_renameat2(fromFolder, from, toFolder, to, flags));
}
int __wrap_unlink(const char* path) {
    return rb::changed(__real_unlink(path));
}
int __wrap_unlinkat(int folder, const char* path, int flags) {
    return rb::changed(__real_unlinkat(folder, path, flags));
}
int __wrap_mkdir(const char* path, mode_t mode) {
    return rb::changed(__real_mkdir(path, mode));
}
int __wrap_fchmod(int file, mode_t mode) {
    return rb::changed(__real_fchmod(file, mode));
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl50-cpp,cppcoreguidelines-pro-type-vararg)
