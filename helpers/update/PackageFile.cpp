#include "helpers/update/PackageFile.h"

#include "desktops/linux/Folders.h"
#include "helpers/shared/WriteAll.h"

#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace rb {

namespace {

constexpr std::string_view prefix = "rookbay-";
constexpr std::string_view ending = ".deb";

// Only files, and only those that we named.
void clear(int folder) {
    const int copy = dup(folder);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(copy >= 0 ? fdopendir(copy) : nullptr, closedir);
    if (!entries) {
        return;
    }
    // The stream is ours alone.
    while (const dirent* entry = readdir(entries.get())) { // NOLINT(concurrency-mt-unsafe)
        const std::string_view name(entry->d_name);
        if (name.starts_with(prefix) && name.ends_with(ending)) {
            unlinkat(folder, entry->d_name, 0);
        }
    }
}

} // namespace

PackageFile::~PackageFile() {
    if (file_ && !kept_) {
        unlink(path_.c_str());
    }
}

std::optional<std::string> PackageFile::create(const std::string& folder, const std::string& version) {
    if (const std::error_code error = makePrivateFolder(folder)) {
        return folder + ": " + error.message();
    }
    const UniqueFd held(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!held || fstat(held.get(), &status) != 0) {
        return folder + ": " + lastErrorText();
    }
    constexpr mode_t others = 077;
    if (status.st_uid != geteuid() || (status.st_mode & others) != 0) {
        return folder + " is open to others";
    }
    clear(held.get());
    const std::string name = std::string(prefix) + version + std::string(ending);
    constexpr mode_t forTheUserAlone = 0600;
    file_ =
        UniqueFd(openat(held.get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, forTheUserAlone));
    if (!file_) {
        return folder + "/" + name + ": " + lastErrorText();
    }
    path_ = folder + "/" + name;
    return std::nullopt;
}

std::optional<std::string> PackageFile::write(const char* bytes, std::size_t count) {
    return writeAll(file_.get(), {bytes, count}) ? std::nullopt : std::optional(path_ + ": " + lastErrorText());
}

} // namespace rb
