#include "desktops/linux/OwnFile.h"

#include "desktops/linux/Folders.h"
#include "desktops/linux/UniqueFd.h"
#include "helpers/shared/WriteAll.h"
#include "platform/Files.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rb {

namespace {

constexpr off_t longestFile = off_t{1} << 20; // bytes

// A complete copy beside the path, to be renamed; empty on failure, with errno set.
std::string writeBeside(const std::string& path, const std::string& text, unsigned mode) {
    std::string name = path + ".XXXXXX";
    const UniqueFd file(mkostemp(name.data(), O_CLOEXEC));
    if (!file) {
        return {};
    }
    if (writeAll(file.get(), text) && fchmod(file.get(), mode) == 0) {
        return name;
    }
    const int error = errno;
    unlink(name.c_str());
    errno = error;
    return {};
}

std::string failure(const std::string& path) {
    return path + ": " + lastErrorText();
}

} // namespace

std::optional<std::string> readOwnFile(const std::string& path) {
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid() ||
        status.st_size > longestFile) {
        return std::nullopt;
    }
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t length = 0;
    while (length < text.size()) {
        const ssize_t count = ::read(file.get(), text.data() + length, text.size() - length);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        length += static_cast<std::size_t>(count);
    }
    text.resize(length);
    return text;
}

bool isPathTaken(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

std::optional<std::string> writeNewFile(const std::string& path, const std::string& text, unsigned mode) {
    const std::string folder = deletingLastPathComponent(path);
    if (const std::error_code error = makePrivateFolder(folder)) {
        return folder + ": " + error.message();
    }
    const std::string complete = writeBeside(path, text, mode);
    if (complete.empty()) {
        return failure(path);
    }
    if (renameat2(AT_FDCWD, complete.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
        return std::nullopt;
    }
    // Some file systems know no such renaming; a second name for the file is as exclusive.
    const bool unknown = errno == EINVAL || errno == ENOSYS;
    const bool linked = unknown && link(complete.c_str(), path.c_str()) == 0;
    const std::string reason = linked ? std::string() : failure(path);
    unlink(complete.c_str());
    return linked ? std::nullopt : std::optional(reason);
}

std::optional<std::string> replaceOwnFile(const std::string& path, const std::string& before, const std::string& text) {
    struct stat status {};
    if (readOwnFile(path) != before || lstat(path.c_str(), &status) != 0) {
        return path + " changed meanwhile";
    }
    const std::string complete = writeBeside(path, text, status.st_mode & 07777U);
    if (complete.empty()) {
        return failure(path);
    }
    if (rename(complete.c_str(), path.c_str()) != 0) {
        const std::string reason = failure(path);
        unlink(complete.c_str());
        return reason;
    }
    return std::nullopt;
}

} // namespace rb
