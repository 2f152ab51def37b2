#include "desktops/linux/DefaultsFile.h"

#include "desktops/linux/DefaultsFormat.h"
#include "desktops/linux/Folders.h"
#include "desktops/linux/UniqueFd.h"
#include "helpers/shared/WriteAll.h"
#include "platform/Log.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

constexpr mode_t privateFile = 0600;

// For the name of a file that is set aside.
std::string utcNow() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &parts);
    return {text.data(), length};
}

bool isMine(const struct stat& status) {
    return status.st_uid == geteuid();
}

} // namespace

// Where the file really is, its folder held open so that nobody can put another one in its place.
struct DefaultsFile::Place {
    UniqueFd folder;
    std::string name;
    std::string path; // for messages
};

struct DefaultsFile::Opened {
    enum class State { Absent, Valid, Broken, Unreadable };
    State state = State::Unreadable;
    PropertyDictionary values = {};
    std::string reason = {};
};

DefaultsFile::DefaultsFile(std::string folder, Log& log, std::string name)
    : folder_(std::move(folder))
    , name_(std::move(name))
    , log_(log) {}

PropertyDictionary DefaultsFile::load() {
    const auto where = place(false);
    if (!where) {
        return {};
    }
    Opened opened = read(*where);
    if (opened.state == Opened::State::Unreadable) {
        giveUp(opened.reason);
    } else if (opened.state == Opened::State::Broken && !setAside(*where, opened.reason)) {
        giveUp(opened.reason + " and can't be set aside: " + lastErrorText());
    }
    return std::move(opened.values);
}

PropertyDictionary DefaultsFile::store(const PropertyDictionary& values, const Changes& changes) {
    for (const auto& [key, value] : changes) {
        unsaved_.insert_or_assign(key, value);
    }
    if (memoryOnly_) {
        return values;
    }
    if (const std::error_code error = makePrivateFolder(folder_)) {
        complain("cannot make the folder " + folder_ + ": " + error.message());
        return values;
    }
    const auto where = place(true);
    if (!where) {
        return values;
    }
    PropertyDictionary result = values;
    const auto before = seen_;
    Opened opened = read(*where);
    if (opened.state == Opened::State::Unreadable) {
        giveUp(opened.reason);
        return values;
    }
    if (opened.state == Opened::State::Broken && !setAside(*where, opened.reason)) {
        giveUp(opened.reason + " and can't be set aside: " + lastErrorText());
        return values;
    }
    if (opened.state == Opened::State::Valid && seen_ != before) {
        result = std::move(opened.values);
        for (const auto& [key, value] : unsaved_) {
            if (value) {
                result.insert_or_assign(key, *value);
            } else {
                result.erase(key);
            }
        }
    }
    const auto text = writeDefaults(result);
    if (!text) {
        complain("the settings are too long or too deep to be stored");
    } else if (write(*where, *text)) {
        unsaved_.clear();
        lastComplaint_.clear();
    }
    return result;
}

std::optional<DefaultsFile::Place> DefaultsFile::place(bool create) {
    Place where{.folder = UniqueFd(open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
                .name = name_,
                .path = folder_ + "/" + name_};
    struct stat status {};
    if (!where.folder || fstat(where.folder.get(), &status) != 0) {
        if (create || errno != ENOENT) {
            giveUp("cannot open the folder " + folder_ + ": " + lastErrorText());
        }
        return std::nullopt;
    }
    if (!isMine(status)) {
        giveUp("the folder " + folder_ + " belongs to someone else");
        return std::nullopt;
    }
    if (fstatat(where.folder.get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISLNK(status.st_mode)) {
        return where;
    }
    // The user's own link, perhaps to a collection of settings: the file it leads to is the one to replace.
    const std::unique_ptr<char, void (*)(void*)> real(realpath(where.path.c_str(), nullptr), std::free);
    if (!real) {
        giveUp(where.path + " is a link that can't be followed: " + lastErrorText());
        return std::nullopt;
    }
    const std::string path = real.get();
    const std::size_t slash = path.rfind('/');
    where = {.folder = UniqueFd(open(path.substr(0, slash + 1).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
             .name = path.substr(slash + 1),
             .path = path};
    if (!where.folder || fstat(where.folder.get(), &status) != 0 || !isMine(status)) {
        giveUp("the link " + folder_ + "/" + name_ + " leads into a folder of someone else: " + path);
        return std::nullopt;
    }
    return where;
}

DefaultsFile::Opened DefaultsFile::read(const Place& place) {
    // Neither a link nor a pipe that waits for a writer.
    const UniqueFd file(openat(place.folder.get(), place.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || fstat(file.get(), &status) != 0) {
        if (errno == ENOENT) {
            return {.state = Opened::State::Absent};
        }
        return {.reason = "cannot read " + place.path + ": " + lastErrorText()};
    }
    if (!S_ISREG(status.st_mode)) {
        return {.reason = place.path + " is not a regular file"};
    }
    if (!isMine(status)) {
        return {.reason = place.path + " belongs to someone else"};
    }
    const Version version{.device = status.st_dev,
                          .inode = status.st_ino,
                          .size = status.st_size,
                          .modified = status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec};
    if (seen_ == version) {
        return {.state = Opened::State::Valid};
    }
    std::string text;
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return {.reason = "cannot read " + place.path + ": " + lastErrorText()};
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
        if (count == 0 || text.size() > longestDefaults) {
            break;
        }
    }
    ParsedDefaults parsed = parseDefaults(text);
    if (!parsed.values) {
        return {.state = Opened::State::Broken, .reason = place.path + " is not valid (" + parsed.error + ")"};
    }
    seen_ = version;
    return {.state = Opened::State::Valid, .values = std::move(*parsed.values)};
}

bool DefaultsFile::setAside(const Place& place, const std::string& reason) {
    constexpr int attempts = 100;
    const std::string wanted = place.name + ".broken-" + utcNow();
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        const std::string name = attempt == 1 ? wanted : wanted + "-" + std::to_string(attempt);
        // A hard link fails where the name exists, so nothing is ever overwritten, on any file system with links.
        const int folder = place.folder.get();
        int result = renameat2(folder, place.name.c_str(), folder, name.c_str(), RENAME_NOREPLACE);
        if (result != 0 && errno == EINVAL) {
            result = linkat(folder, place.name.c_str(), folder, name.c_str(), 0);
            result = result == 0 ? unlinkat(folder, place.name.c_str(), 0) : result;
        }
        if (result == 0) {
            std::string told = reason;
            told.append("; it is kept as ").append(name);
            log_.write(told);
            seen_.reset();
            return true;
        }
        if (errno != EEXIST) {
            return false;
        }
    }
    return false;
}

bool DefaultsFile::write(const Place& place, const std::string& text) {
    const int folder = place.folder.get();
    const std::string name = place.name + ".new-" + std::to_string(getpid());
    unlinkat(folder, name.c_str(), 0); // of an earlier process with our number that died while writing
    const UniqueFd file(
        openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, privateFile));
    struct stat status {};
    if (!file || !writeAll(file.get(), text) || fsync(file.get()) != 0 || fstat(file.get(), &status) != 0 ||
        renameat(folder, name.c_str(), folder, place.name.c_str()) != 0) {
        complain("cannot write " + place.path + ": " + lastErrorText());
        if (file) {
            unlinkat(folder, name.c_str(), 0);
        }
        return false;
    }
    fsync(folder);
    seen_ = Version{.device = status.st_dev,
                    .inode = status.st_ino,
                    .size = status.st_size,
                    .modified = status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec};
    return true;
}

void DefaultsFile::giveUp(const std::string& reason) {
    memoryOnly_ = true;
    complain(reason + "; the settings of this run are kept in memory only");
}

void DefaultsFile::complain(const std::string& reason) {
    if (lastComplaint_ != reason) {
        lastComplaint_ = reason;
        log_.write(reason);
    }
}

} // namespace rb
