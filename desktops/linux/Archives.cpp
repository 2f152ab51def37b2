#include "desktops/linux/Archives.h"

#include "desktops/linux/Folders.h"
#include "desktops/linux/KeyedArchive.h"
#include "desktops/linux/UniqueFd.h"
#include "helpers/shared/WriteAll.h"
#include "platform/Log.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <malloc.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

constexpr mode_t privateFile = 0600;
constexpr off_t largestArchive = off_t{1} << 30U;

UniqueFd openFolder(const std::string& path) {
    return UniqueFd(open(path.substr(0, path.rfind('/')).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

std::string nameIn(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string setAsideName(const std::string& name, int attempt) {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &parts);
    return name + ".broken-" + text.data() + (attempt == 0 ? "" : "-" + std::to_string(attempt + 1));
}

// Under the name it has from now on; empty when it couldn't be renamed.
std::string setAside(int folder, const std::string& name) {
    constexpr int attempts = 100;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::string other = setAsideName(name, attempt);
        if (renameat2(folder, name.c_str(), folder, other.c_str(), RENAME_NOREPLACE) == 0) {
            return other;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return {};
}

bool readAll(int fd, std::string& bytes) {
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = ::read(fd, bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            bytes.resize(filled);
            return count == 0;
        }
        filled += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

LinuxArchives::LinuxArchives(std::string folder, Log& log)
    : folder_(std::move(folder))
    , log_(log) {}

void LinuxArchives::complain(const std::string& reason) {
    const std::lock_guard lock(mutex_);
    if (lastComplaint_ != reason) {
        lastComplaint_ = reason;
        log_.write(reason);
    }
}

void LinuxArchives::giveUp(const std::string& reason) {
    memoryOnly_ = true;
    complain(reason + "; what belongs there is kept in memory only");
}

std::string LinuxArchives::location(const std::string& fileName) {
    if (const std::error_code error = makePrivateFolder(folder_)) {
        complain("cannot make the folder " + folder_ + ": " + error.message());
        return {};
    }
    return folder_ + "/" + fileName;
}

std::optional<std::vector<ArchiveObject>> LinuxArchives::read(const std::string& path,
                                                              const ArchiveClass& objectClass) {
    if (path.empty()) {
        return std::nullopt;
    }
    const UniqueFd folder = openFolder(path);
    struct stat status {};
    if (!folder || fstat(folder.get(), &status) != 0 || status.st_uid != geteuid()) {
        giveUp("the folder of " + path + " can't be opened or belongs to someone else");
        return std::nullopt;
    }
    const std::string name = nameIn(path);
    // Neither a link nor a pipe that waits for a writer.
    const UniqueFd file(openat(folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file || fstat(file.get(), &status) != 0) {
        if (errno != ENOENT) {
            giveUp("cannot read " + path + ": " + lastErrorText());
        }
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode) || status.st_uid != geteuid()) {
        giveUp(path + " is not a file of our own");
        return std::nullopt;
    }
    DecodedArchive decoded{.objects = std::nullopt, .fault = "too large"};
    if (status.st_size <= largestArchive) {
        std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
        if (!readAll(file.get(), bytes)) {
            giveUp("cannot read " + path + ": " + lastErrorText());
            return std::nullopt;
        }
        decoded = decodeArchive(objectClass, bytes);
    }
    malloc_trim(0); // the library's copy of everything
    if (!decoded.objects) {
        const std::string other = setAside(folder.get(), name);
        if (other.empty()) {
            giveUp(path + " is not valid (" + decoded.fault + ") and can't be set aside: " + lastErrorText());
        } else {
            log_.write(path + " is not valid (" + decoded.fault + "); it is kept as " + other);
        }
    } else if (decoded.damaged > 0) {
        log_.write(path + ": " + std::to_string(decoded.damaged) + " damaged records are left out");
    }
    return std::move(decoded.objects);
}

bool LinuxArchives::write(const std::string& path, const ArchiveClass& objectClass,
                          const std::vector<ArchiveObject>& objects) {
    const UniqueFd folder = memoryOnly_ ? UniqueFd() : openFolder(path);
    struct stat status {};
    if (!folder || fstat(folder.get(), &status) != 0 || status.st_uid != geteuid()) {
        return false;
    }
    const std::string name = nameIn(path);
    if (fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        (!S_ISREG(status.st_mode) || status.st_uid != geteuid())) {
        complain(path + " is not a file of our own and isn't replaced");
        return false;
    }
    bool written = false;
    {
        const EncodedArchive encoded = encodeArchive(objectClass, objects);
        // One name only, so that nothing piles up when the machine stops in the middle again and again.
        const std::string fresh = name + ".new";
        unlinkat(folder.get(), fresh.c_str(), 0);
        const UniqueFd file(
            openat(folder.get(), fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, privateFile));
        // Whatever the umask took away or left.
        written = encoded.bytes && file && fchmod(file.get(), privateFile) == 0 &&
                  writeAll(file.get(), {encoded.bytes.get(), encoded.size}) && fsync(file.get()) == 0 &&
                  renameat(folder.get(), fresh.c_str(), folder.get(), name.c_str()) == 0;
        if (!written) {
            complain("cannot write " + path + ": " + lastErrorText());
            if (file) {
                unlinkat(folder.get(), fresh.c_str(), 0);
            }
        }
    }
    fsync(folder.get());
    malloc_trim(0);
    return written;
}

} // namespace rb
