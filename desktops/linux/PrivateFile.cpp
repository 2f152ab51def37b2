#include "desktops/linux/PrivateFile.h"

#include "desktops/linux/Folders.h"
#include "desktops/linux/UniqueFd.h"
#include "helpers/shared/WriteAll.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace rb {

namespace {

constexpr std::size_t longestFile = std::size_t{1} << 20;

std::string realPath(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : path;
}

// What is written before it takes the file's place.
std::string freshName(const std::string& path) {
    return path + ".rookbay-new";
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

} // namespace

PrivateFile::Reading PrivateFile::read() const {
    const UniqueFd file(open(realPath(path_).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file) {
        // A link that leads nowhere isn't an absence that we could put back.
        const bool absent = errno == ENOENT && lstat(path_.c_str(), &status) != 0 && errno == ENOENT;
        return {.readable = absent};
    }
    if (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid() ||
        static_cast<std::size_t>(status.st_size) > longestFile) {
        return {};
    }
    std::string bytes;
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0 || bytes.size() > longestFile) {
            return {};
        }
        if (count == 0) {
            return {.readable = true, .bytes = std::move(bytes)};
        }
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

bool PrivateFile::write(const std::optional<std::string>& bytes) const {
    if (!read().readable) {
        return false;
    }
    const std::string path = realPath(path_);
    const std::string folder = folderOf(path);
    struct stat status {};
    if (!bytes) {
        const bool gone = unlink(path.c_str()) == 0 || errno == ENOENT;
        const UniqueFd parent(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return gone && (!parent || fsync(parent.get()) == 0);
    }
    if (makePrivateFolder(folder) || stat(folder.c_str(), &status) != 0 || status.st_uid != geteuid()) {
        return false;
    }
    const mode_t mode = stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0600;
    const std::string fresh = freshName(path);
    unlink(fresh.c_str()); // of a run that died while writing
    const UniqueFd file(open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) {
        return false;
    }
    if (!writeAll(file.get(), *bytes) || fchmod(file.get(), mode) != 0 || fsync(file.get()) != 0 ||
        rename(fresh.c_str(), path.c_str()) != 0) {
        unlink(fresh.c_str());
        return false;
    }
    const UniqueFd parent(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return !parent || fsync(parent.get()) == 0;
}

void PrivateFile::tidy() const {
    unlink(freshName(realPath(path_)).c_str());
}

} // namespace rb
