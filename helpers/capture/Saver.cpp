#include "helpers/capture/Saver.h"

#include "desktops/linux/CaptureAttributes.h"
#include "desktops/linux/Folders.h"
#include "desktops/linux/UniqueFd.h"
#include "helpers/capture/FileName.h"
#include "helpers/shared/WriteAll.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace rb {

namespace {

constexpr mode_t asTheUserLikes = 0666; // less the user's mask
constexpr int mostNames = 1000;

std::string reasonInWords(int error) {
    switch (error) {
    case EACCES:
    case EPERM:
        return "没有写入这个文件夹的权限";
    case EROFS:
        return "这个位置是只读的";
    case ENOSPC:
    case EDQUOT:
        return "磁盘空间不足";
    case ENAMETOOLONG:
        return "文件名太长";
    case ENOENT:
    case ENOTDIR:
        return "文件夹不存在";
    default:
        return lastErrorText();
    }
}

// Of this process on this machine: several may save on one share.
std::string hiddenName() {
    std::array<char, 256> host{};
    gethostname(host.data(), host.size() - 1);
    return ".rookbay-capture-" + std::string(host.data()) + "-" + std::to_string(getpid());
}

// The file before it has its final name.
class NewFile {
public:
    explicit NewFile(int folder)
        : folder_(folder)
        , fd_(openat(folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, asTheUserLikes)) {
        if (!fd_ && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL || errno == ENOENT)) {
            // A file system without nameless files: a hidden one, which watchers of folders leave out.
            name_ = hiddenName();
            unlinkat(folder_, name_.c_str(), 0); // of an earlier process with our number
            fd_ = UniqueFd(
                openat(folder_, name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, asTheUserLikes));
            made_ = static_cast<bool>(fd_);
        }
    }
    ~NewFile() {
        if (made_) {
            unlinkat(folder_, name_.c_str(), 0);
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    int get() const { return fd_.get(); }

    // Nobody has it open for writing from now on: who watches the folder sees it complete from the first moment.
    bool endWriting() {
        UniqueFd reading(open(self().c_str(), O_RDONLY | O_CLOEXEC));
        if (!reading) {
            return false;
        }
        fd_ = std::move(reading);
        return true;
    }

    // False with EEXIST when the name is taken.
    bool giveName(const std::string& name) {
        if (!made_) {
            return linkat(AT_FDCWD, self().c_str(), folder_, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
        }
        if (renameat2(folder_, name_.c_str(), folder_, name.c_str(), RENAME_NOREPLACE) == 0) {
            made_ = false;
            return true;
        }
        if (errno != EINVAL && errno != ENOSYS) {
            return false;
        }
        if (linkat(folder_, name_.c_str(), folder_, name.c_str(), 0) == 0) {
            return true; // the hidden name goes with this object
        }
        if (errno != EPERM && errno != EOPNOTSUPP) {
            return false;
        }
        // Neither way: the name is taken by an empty file of ours, which the complete one replaces at once.
        const UniqueFd place(
            openat(folder_, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, asTheUserLikes));
        if (!place) {
            return false;
        }
        if (renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0) {
            const int error = errno;
            unlinkat(folder_, name.c_str(), 0);
            errno = error;
            return false;
        }
        made_ = false;
        return true;
    }

private:
    std::string self() const { return "/proc/self/fd/" + std::to_string(fd_.get()); }

    int folder_;
    UniqueFd fd_;
    std::string name_;
    bool made_ = false;
};

} // namespace

SavedCapture saveCapture(const std::string& folder, const std::string& name, const std::string& extension,
                         const CaptureFile& file) {
    const auto failed = [&] { return SavedCapture{.path = {}, .error = reasonInWords(errno)}; };
    const UniqueFd place(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!place) {
        return failed();
    }
    NewFile fresh(place.get());
    if (fresh.get() < 0 || !writeAll(fresh.get(), file.bytes)) {
        return failed();
    }
    (void)writeAttribute(fresh.get(), captureMarkAttribute, captureMark());
    if (file.taken) {
        (void)writeAttribute(fresh.get(), captureRectAttribute, captureRectangle(*file.taken));
    }
    // Some file systems find out only here that there is no room.
    if (fsync(fresh.get()) != 0 || !fresh.endWriting()) {
        return failed();
    }
    for (int number = 1; number <= mostNames; ++number) {
        const std::string fileName = numberedName(name, number) + "." + extension;
        if (fresh.giveName(fileName)) {
            fsync(place.get()); // the name is as lasting as the file
            return {.path = (folder == "/" ? "" : folder) + "/" + fileName, .error = {}};
        }
        if (errno != EEXIST) {
            return failed();
        }
    }
    return {.path = {}, .error = "同名的文件太多"};
}

} // namespace rb
