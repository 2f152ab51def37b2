#include "desktops/linux/FolderWatches.h"

#include "desktops/linux/UniqueFd.h"

#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

// Files that were made longer ago than any watcher looks back aren't opened just to see who writes them.
constexpr double writersWindow = 3600; // seconds

struct LinuxOpenFolder final : OpenFolder {
    LinuxOpenFolder(std::string from, UniqueFd opened, const struct stat& facts)
        : path(std::move(from))
        , fd(std::move(opened))
        , device(facts.st_dev)
        , inode(facts.st_ino) {}
    bool isCurrent() const override {
        struct stat now {};
        return !gone && stat(path.c_str(), &now) == 0 && now.st_dev == device && now.st_ino == inode &&
               faccessat(AT_FDCWD, path.c_str(), R_OK | X_OK, AT_EACCESS) == 0;
    }
    std::string path;
    UniqueFd fd; // until it is watched
    dev_t device;
    ino_t inode;
    bool gone = false; // and its number may be another folder's
};

struct Watch {
    UniqueFd queue;
    std::shared_ptr<LinuxOpenFolder> folder;
    std::function<void(const FolderChange&)> changed;
    std::unique_ptr<QSocketNotifier> notifier;
    bool shared = false; // others change the folder unseen
    bool telling = false;

    void tell() {
        FolderChange change{.everything = shared};
        std::array<char, 65536> events{};
        for (ssize_t size = 0; (size = read(queue.get(), events.data(), events.size())) > 0;) {
            for (std::size_t at = 0; at + sizeof(inotify_event) <= static_cast<std::size_t>(size);) {
                inotify_event event{};
                std::memcpy(&event, events.data() + at, sizeof(event));
                folder->gone = folder->gone || (event.mask & (IN_IGNORED | IN_DELETE_SELF | IN_UNMOUNT)) != 0;
                change.everything = change.everything || (event.mask & IN_Q_OVERFLOW) != 0;
                if (event.len > 0) {
                    change.names.emplace_back(events.data() + at + sizeof(event)); // ends with zeros
                }
                at += sizeof(event) + event.len;
            }
        }
        const auto call = changed; // it may end this watch
        telling = true;
        call(change);
        telling = false;
    }
    void end() {
        notifier->setEnabled(false);
        if (telling) {
            notifier.release()->deleteLater();
        } else {
            notifier.reset();
        }
    }
};

// What another machine or a program changes there is no event here, so each event must do for all of it.
bool isShared(int folder) {
    constexpr std::uint32_t nfs = 0x6969;
    constexpr std::uint32_t smb = 0xFE534D42;
    constexpr std::uint32_t cifs = 0xFF534D42;
    constexpr std::uint32_t fuse = 0x65735546;
    constexpr std::uint32_t plan9 = 0x01021997;
    constexpr std::uint32_t ceph = 0x00C36400;
    constexpr std::uint32_t afs = 0x5346414F;
    struct statfs facts {};
    if (fstatfs(folder, &facts) != 0) {
        return true;
    }
    constexpr std::array kinds{nfs, smb, cifs, fuse, plan9, ceph, afs};
    return std::find(kinds.begin(), kinds.end(), static_cast<std::uint32_t>(facts.f_type)) != kinds.end();
}

double seconds(std::int64_t whole, std::uint32_t nanoseconds) {
    return static_cast<double>(whole) + nanoseconds * 1e-9;
}

// A read lease is granted only while nobody has the file open for writing.
bool isBeingWritten(int folder, const char* name) {
    const UniqueFd file(openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    if (!file) {
        return false;
    }
    // A writer that comes at this very moment is announced by a signal, which by default would end the process.
    if (fcntl(file.get(), F_SETSIG, SIGURG) != 0) {
        return false;
    }
    if (fcntl(file.get(), F_SETLEASE, F_RDLCK) != 0) {
        return errno == EAGAIN;
    }
    fcntl(file.get(), F_SETLEASE, F_UNLCK);
    return false;
}

// Nothing for what is hidden, gone or not yet complete.
std::optional<FolderEntry> entryOf(const std::string& path, int folder, const char* name, double now) {
    struct statx facts {};
    if (name[0] == '.' || statx(folder, name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC,
                                STATX_BTIME | STATX_TYPE | STATX_SIZE, &facts) != 0) {
        return std::nullopt;
    }
    std::string file = path;
    file.append("/").append(name);
    FolderEntry found{.path = std::move(file), .created = std::nullopt};
    if ((facts.stx_mask & STATX_BTIME) != 0) {
        found.created = seconds(facts.stx_btime.tv_sec, facts.stx_btime.tv_nsec);
    }
    const bool young = !found.created || *found.created > now - writersWindow;
    if (S_ISREG(facts.stx_mode) && young && (facts.stx_size == 0 || isBeingWritten(folder, name))) {
        return std::nullopt;
    }
    return found;
}

} // namespace

std::shared_ptr<OpenFolder> LinuxFolderWatches::open(const std::string& path) {
    UniqueFd folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat facts {};
    if (!folder || fstat(folder.get(), &facts) != 0) {
        return nullptr;
    }
    return std::make_shared<LinuxOpenFolder>(path, std::move(folder), facts);
}

Handle LinuxFolderWatches::watch(std::shared_ptr<OpenFolder> folder, std::function<void(const FolderChange&)> changed) {
    constexpr std::uint32_t events = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE |
                                     IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
    auto watch = std::make_shared<Watch>();
    watch->queue = UniqueFd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    watch->folder = std::static_pointer_cast<LinuxOpenFolder>(std::move(folder));
    const int fd = watch->folder->fd.get();
    // By the descriptor: the path may lead elsewhere by now.
    const std::string self = "/proc/self/fd/" + std::to_string(fd);
    if (!watch->queue || inotify_add_watch(watch->queue.get(), self.c_str(), events) < 0) {
        return {};
    }
    watch->shared = isShared(fd);
    // An open folder would keep its file system from being unmounted.
    watch->folder->fd = UniqueFd();
    watch->changed = std::move(changed);
    watch->notifier = std::make_unique<QSocketNotifier>(watch->queue.get(), QSocketNotifier::Read);
    QObject::connect(watch->notifier.get(), &QSocketNotifier::activated, watch->notifier.get(),
                     [weak = std::weak_ptr<Watch>(watch)] {
                         if (const auto living = weak.lock()) {
                             living->tell();
                         }
                     });
    return Handle([watch] { watch->end(); });
}

std::vector<FolderEntry> LinuxFolderWatches::list(const std::string& path) {
    std::vector<FolderEntry> entries;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path.c_str()), closedir);
    if (!folder) {
        return entries;
    }
    const int fd = dirfd(folder.get());
    const auto now = static_cast<double>(std::time(nullptr));
    // The stream is ours alone.
    while (const dirent* entry = readdir(folder.get())) { // NOLINT(concurrency-mt-unsafe)
        if (auto found = entryOf(path, fd, entry->d_name, now)) {
            entries.push_back(std::move(*found));
        }
    }
    return entries;
}

std::optional<std::vector<FolderEntry>> LinuxFolderWatches::look(const std::string& path,
                                                                 const std::vector<std::string>& names) {
    const UniqueFd folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        return std::nullopt;
    }
    std::vector<FolderEntry> entries;
    const auto now = static_cast<double>(std::time(nullptr));
    for (const std::string& name : names) {
        if (auto found = entryOf(path, folder.get(), name.c_str(), now)) {
            entries.push_back(std::move(*found));
        }
    }
    return entries;
}

} // namespace rb
