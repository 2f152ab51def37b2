#include "desktops/linux/FileOperations.h"

#include "desktops/linux/Trash.h"
#include "desktops/linux/TreeCopy.h"
#include "desktops/linux/UniqueFd.h"
#include "platform/Files.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace rb {

namespace {

FileFailure failureOf(int error) {
    return {.targetExists = error == EEXIST || error == ENOTEMPTY,
            .reason = std::error_code(error, std::generic_category()).message()};
}

bool isDirectory(const std::string& path) {
    struct stat facts {};
    return lstat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

// For file systems that can't rename exclusively in one call: a second name and then the first one's removal, and for
// folders an empty folder of ours, which a rename replaces only while it is empty.
int renameByLink(const std::string& from, const std::string& to) {
    if (isDirectory(from)) {
        constexpr mode_t ownerOnly = 0700;
        if (mkdir(to.c_str(), ownerOnly) != 0) {
            return errno;
        }
        if (std::rename(from.c_str(), to.c_str()) == 0) {
            return 0;
        }
        const int error = errno;
        rmdir(to.c_str());
        return error;
    }
    if (linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) != 0) {
        return errno;
    }
    if (unlink(from.c_str()) != 0) {
        const int error = errno;
        unlink(to.c_str());
        return error;
    }
    return 0;
}

// 0 or the error number.
int renameExclusively(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    return errno == EINVAL || errno == ENOSYS ? renameByLink(from, to) : errno;
}

// A copy under its final name, or nothing at all.
std::optional<FileFailure> copyInto(TreeCopy& copy, const std::string& from, const std::string& to) {
    std::string workshop = appendingPathComponent(deletingLastPathComponent(to), ".rookbay-XXXXXX");
    if (mkdtemp(workshop.data()) == nullptr) {
        return failureOf(errno);
    }
    const std::string made = workshop + "/copy";
    int error = copy.make(from, made);
    if (error == 0) {
        error = renameExclusively(made, to);
    }
    if (error != 0) {
        copy.removeCopy();
    }
    rmdir(workshop.c_str());
    if (const UniqueFd folder(open(deletingLastPathComponent(to).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        folder.get() >= 0) {
        fsync(folder.get()); // the new name is as lasting as what it names
    }
    return error == 0 ? std::nullopt : std::optional(failureOf(error));
}

} // namespace

std::optional<FileFailure> LinuxFileOperations::moveItem(const std::string& from, const std::string& to) {
    const int error = renameExclusively(from, to);
    if (error == 0) {
        return std::nullopt;
    }
    if (error != EXDEV) {
        return failureOf(error);
    }
    // A source that can't be removed afterwards isn't copied in the first place.
    if (access(deletingLastPathComponent(from).c_str(), W_OK | X_OK) != 0) {
        return failureOf(errno);
    }
    TreeCopy copy;
    if (auto failure = copyInto(copy, from, to)) {
        return failure;
    }
    if (const int kept = copy.removeSource(); kept != 0 && !copy.removedAny()) {
        copy.removeCopyAt(to);
        return failureOf(kept);
    }
    return std::nullopt;
}

std::optional<FileFailure> LinuxFileOperations::copyItem(const std::string& from, const std::string& to) {
    struct stat facts {};
    if (lstat(to.c_str(), &facts) == 0) {
        return failureOf(EEXIST);
    }
    if (to.starts_with(from + "/")) {
        return failureOf(EINVAL);
    }
    TreeCopy copy;
    return copyInto(copy, from, to);
}

SharedBytes LinuxFileOperations::contents(const std::string& path) const {
    QFile file(QString::fromStdString(path));
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
        return nullptr;
    }
    const QByteArray bytes = file.readAll();
    return file.error() == QFileDevice::NoError ? std::make_shared<const Bytes>(bytes.begin(), bytes.end()) : nullptr;
}

std::optional<FileFailure> LinuxFileOperations::trashItem(const std::string& path) {
    struct stat facts {};
    if (lstat(path.c_str(), &facts) != 0) {
        return failureOf(errno);
    }
    return putIntoTrash(path, [this](const std::string& from, const std::string& to) { return moveItem(from, to); });
}

} // namespace rb
