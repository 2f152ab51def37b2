#include "desktops/linux/Trash.h"

#include "desktops/linux/UniqueFd.h"
#include "desktops/linux/UriList.h"
#include "helpers/shared/WriteAll.h"
#include "platform/Files.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace rb {

namespace {

constexpr mode_t ownerOnly = 0600;
constexpr mode_t folderOwnerOnly = 0700;
constexpr std::size_t longestName = 230; // bytes, so that a counter and an ending still fit
constexpr int mostNames = 10'000;

struct Trash {
    std::string folder;
    std::string top; // paths are kept from here on; empty for whole ones
};

FileFailure failureOf(int error) {
    return {.reason = std::error_code(error, std::generic_category()).message()};
}

// A folder of the user's own, no link, made where there is none.
bool haveFolder(const std::string& path) {
    struct stat facts {};
    return (mkdir(path.c_str(), folderOwnerOnly) == 0 || errno == EEXIST) && lstat(path.c_str(), &facts) == 0 &&
           S_ISDIR(facts.st_mode) && facts.st_uid == getuid();
}

std::string dataHome() {
    const char* given = std::getenv("XDG_DATA_HOME"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    if (given != nullptr && *given == '/') {
        return given;
    }
    const char* home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    return home != nullptr && *home == '/' ? std::string(home) + "/.local/share" : "";
}

std::optional<Trash> homeTrash() {
    const std::string data = dataHome();
    std::error_code failed;
    if (data.empty() || (std::filesystem::create_directories(data, failed), failed)) {
        return std::nullopt;
    }
    return haveFolder(data + "/Trash") ? std::optional(Trash{data + "/Trash", ""}) : std::nullopt;
}

std::optional<dev_t> deviceOf(const std::string& path) {
    struct stat facts {};
    return stat(path.c_str(), &facts) == 0 ? std::optional(facts.st_dev) : std::nullopt;
}

// The Trash at the top of the file system on which the folder lies.
std::optional<Trash> topTrash(const std::string& folder) {
    std::error_code failed;
    std::string top = std::filesystem::canonical(folder, failed).string();
    const auto device = deviceOf(top);
    while (!failed && top != "/" && deviceOf(deletingLastPathComponent(top)) == device) {
        top = deletingLastPathComponent(top);
    }
    if (failed || !device) {
        return std::nullopt;
    }
    const std::string base = top == "/" ? "" : top;
    const std::string user = std::to_string(getuid());
    struct stat shared {};
    // A shared one must keep users from one another's files.
    if (lstat((base + "/.Trash").c_str(), &shared) == 0 && S_ISDIR(shared.st_mode) && (shared.st_mode & S_ISVTX) != 0 &&
        haveFolder(base + "/.Trash/" + user)) {
        return Trash{base + "/.Trash/" + user, top};
    }
    return haveFolder(base + "/.Trash-" + user) ? std::optional(Trash{base + "/.Trash-" + user, top}) : std::nullopt;
}

std::string originOf(const std::string& path, const Trash& trash) {
    constexpr std::string_view scheme = "file://";
    std::error_code failed;
    const std::string folder = std::filesystem::canonical(deletingLastPathComponent(path), failed).string();
    const std::string whole = failed ? path : appendingPathComponent(folder, lastPathComponent(path));
    if (trash.top.empty()) {
        return fileUri(path).substr(scheme.size());
    }
    return fileUri(whole.substr(trash.top == "/" ? 0 : trash.top.size())).substr(scheme.size() + 1);
}

std::string infoFor(const std::string& path, const Trash& trash) {
    std::array<char, 32> date{};
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + originOf(path, trash) + "\nDeletionDate=" + date.data() + "\n";
}

// Too long names are cut, between characters.
std::string nameInTrash(const std::string& name, int number) {
    std::size_t end = std::min(name.size(), longestName);
    while (end < name.size() && end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    const std::string kept = name.substr(0, end);
    return number == 1 ? kept : kept + "." + std::to_string(number);
}

std::optional<FileFailure>
putInto(const Trash& trash, const std::string& path,
        const std::function<std::optional<FileFailure>(const std::string&, const std::string&)>& move) {
    if (!haveFolder(trash.folder + "/files") || !haveFolder(trash.folder + "/info")) {
        return failureOf(errno != 0 ? errno : EACCES);
    }
    const std::string text = infoFor(path, trash);
    for (int number = 1; number <= mostNames; ++number) {
        const std::string name = nameInTrash(lastPathComponent(path), number);
        const std::string info = trash.folder + "/info/" + name + ".trashinfo";
        // Whoever makes this file first has the name.
        const UniqueFd file(open(info.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
        if (file.get() < 0) {
            if (errno == EEXIST) {
                continue;
            }
            return failureOf(errno);
        }
        const bool written = writeAll(file.get(), text) && fsync(file.get()) == 0;
        const int error = errno;
        auto failure = written ? move(path, trash.folder + "/files/" + name) : std::optional(failureOf(error));
        if (!failure) {
            return std::nullopt;
        }
        unlink(info.c_str());
        if (!failure->targetExists) {
            return failure;
        }
    }
    return failureOf(EEXIST);
}

} // namespace

std::optional<FileFailure>
putIntoTrash(const std::string& path,
             const std::function<std::optional<FileFailure>(const std::string& from, const std::string& to)>& move) {
    const std::string folder = deletingLastPathComponent(path);
    const auto home = homeTrash();
    if (home && deviceOf(home->folder) != deviceOf(folder)) {
        if (const auto top = topTrash(folder); top && !putInto(*top, path, move)) {
            return std::nullopt;
        }
    } else if (!home) {
        const auto top = topTrash(folder);
        return top ? putInto(*top, path, move) : std::optional(failureOf(EACCES));
    }
    return putInto(*home, path, move);
}

} // namespace rb
