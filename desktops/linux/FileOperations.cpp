#include "desktops/linux/FileOperations.h"

#include "desktops/linux/CopyNotes.h"
#include "desktops/linux/Trash.h"
#include "desktops/linux/TreeCopy.h"
#include "desktops/linux/UnchangedFile.h"
#include "desktops/linux/UniqueFd.h"
#include "platform/Files.h"
#include "platform/RunLoop.h"

#include <QThreadPool>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

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

// For a file system that has no second names either: the name is taken by an empty file of ours, which the rename
// replaces.
int renameOverOwn(const std::string& from, const std::string& to) {
    constexpr mode_t ownerOnly = 0600;
    const UniqueFd place(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
    if (!place) {
        return errno;
    }
    if (std::rename(from.c_str(), to.c_str()) == 0) {
        return 0;
    }
    const int error = errno;
    unlink(to.c_str());
    return error;
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
        const bool refused = errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS || errno == EMLINK;
        return refused ? renameOverOwn(from, to) : errno;
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
    int error = 0;
    {
        const CopyFolder workshop(deletingLastPathComponent(to));
        if (workshop.path().empty()) {
            return failureOf(errno);
        }
        const std::string made = workshop.path() + "/copy";
        error = copy.make(from, made);
        if (error == 0) {
            error = renameExclusively(made, to);
        }
        if (error == 0) {
            copy.finish(to);
        } else {
            copy.removeCopy();
        }
    }
    if (const UniqueFd folder(open(deletingLastPathComponent(to).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        folder.get() >= 0) {
        fsync(folder.get()); // the new name is as lasting as what it names
    }
    return error == 0 ? std::nullopt : std::optional(failureOf(error));
}

std::optional<FileFailure> moveByCopy(const std::string& from, const std::string& to,
                                      const std::atomic<bool>& cancelled) {
    // What can't succeed isn't copied in the first place: a source that can't be removed, a name that is taken.
    struct stat facts {};
    if (access(deletingLastPathComponent(from).c_str(), W_OK | X_OK) != 0) {
        return failureOf(errno);
    }
    if (lstat(to.c_str(), &facts) == 0) {
        return failureOf(EEXIST);
    }
    TreeCopy copy(cancelled);
    if (auto failure = copyInto(copy, from, to)) {
        return failure;
    }
    if (const int kept = copy.removeSource(); kept != 0 && !copy.removedAny()) {
        copy.removeCopyAt(to);
        return failureOf(kept);
    }
    return std::nullopt;
}

class LinuxOpenedFile final : public OpenedFile {
public:
    explicit LinuxOpenedFile(UniqueFd file)
        : file_(std::move(file)) {}

    SharedBytes contents(const std::atomic<bool>& givenUp) const override {
        constexpr std::size_t piece = 1'048'576;
        const auto bytes = std::make_shared<Bytes>(file_.size());
        for (std::size_t have = 0; have < bytes->size(); have += piece) {
            const auto rest = std::span(*bytes).subspan(have);
            if (givenUp || !file_.read(have, rest.first(std::min(piece, rest.size())))) {
                return nullptr;
            }
        }
        return file_.isUnchanged() ? bytes : nullptr;
    }

private:
    UnchangedFile file_;
};

void tell(const FileOperations::Done& done, const std::optional<FileFailure>& failure) {
    if (done) {
        done(failure);
    }
}

} // namespace

LinuxFileOperations::LinuxFileOperations(RunLoop& loop)
    : loop_(loop) {
    if (hasForgottenCopies()) {
        inBackground(
            [](const std::atomic<bool>&) {
                removeForgottenCopies();
                return std::nullopt;
            },
            {});
    }
}

LinuxFileOperations::~LinuxFileOperations() {
    cancelled_ = true;
    if (worker_) {
        worker_->waitForDone();
    }
}

void LinuxFileOperations::inBackground(Work work, Done done) {
    if (!worker_) {
        worker_ = std::make_unique<QThreadPool>();
        worker_->setMaxThreadCount(1);
    }
    // What is told lives and dies on the main thread: it goes there and back in a box of its own.
    worker_->start([this, work = std::move(work), box = std::make_shared<Done>(std::move(done))]() mutable {
        const auto failure = cancelled_ ? failureOf(ECANCELED) : work(cancelled_);
        loop_.post([box = std::move(box), failure] { tell(*box, failure); });
    });
}

void LinuxFileOperations::moveItem(const std::string& from, const std::string& to, Done done) {
    const int error = renameExclusively(from, to);
    if (error != EXDEV) {
        tell(done, error == 0 ? std::nullopt : std::optional(failureOf(error)));
        return;
    }
    inBackground([from, to](const std::atomic<bool>& cancelled) { return moveByCopy(from, to, cancelled); },
                 std::move(done));
}

void LinuxFileOperations::copyItem(const std::string& from, const std::string& to, Done done) {
    struct stat facts {};
    if (lstat(to.c_str(), &facts) == 0) {
        tell(done, failureOf(EEXIST));
        return;
    }
    if (to.starts_with(from + "/")) {
        tell(done, failureOf(EINVAL));
        return;
    }
    inBackground(
        [from, to](const std::atomic<bool>& cancelled) {
            TreeCopy copy(cancelled);
            return copyInto(copy, from, to);
        },
        std::move(done));
}

std::shared_ptr<const OpenedFile> LinuxFileOperations::open(const std::string& path, std::size_t mostBytes) const {
    UniqueFd file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)); // a pipe must not keep us waiting
    struct stat facts {};
    if (!file || fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode) ||
        static_cast<std::uint64_t>(facts.st_size) > mostBytes) {
        return nullptr;
    }
    return std::make_shared<const LinuxOpenedFile>(std::move(file));
}

void LinuxFileOperations::trashItem(const std::string& path, Done done) {
    struct stat facts {};
    if (lstat(path.c_str(), &facts) != 0) {
        tell(done, failureOf(errno));
        return;
    }
    bool elsewhere = false;
    const auto failure =
        putIntoTrash(path, [&elsewhere](const std::string& from, const std::string& to) -> std::optional<FileFailure> {
            const int error = renameExclusively(from, to);
            elsewhere = error == EXDEV;
            return error == 0 ? std::nullopt : std::optional(failureOf(error));
        });
    if (!failure || !elsewhere) {
        tell(done, failure);
        return;
    }
    // Its own file system has no Trash.
    inBackground(
        [path](const std::atomic<bool>& cancelled) {
            return putIntoTrash(path, [&cancelled](const std::string& from, const std::string& to) {
                return moveByCopy(from, to, cancelled);
            });
        },
        std::move(done));
}

} // namespace rb
