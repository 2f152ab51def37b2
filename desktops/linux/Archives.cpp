#include "desktops/linux/Archives.h"

#include "desktops/linux/Folders.h"
#include "desktops/linux/KeyedArchive.h"
#include "desktops/linux/UnchangedFile.h"
#include "desktops/linux/UniqueFd.h"
#include "helpers/shared/WriteAll.h"
#include "platform/Log.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <iterator>
#include <memory>
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

// Whether its data, if it has some, can still be read.
bool isReadable(const ArchiveObject& object) {
    return std::all_of(object.begin(), object.end(), [](const auto& entry) {
        const auto* data = std::get_if<SharedBlob>(&entry.second);
        const auto place = data != nullptr && *data ? (*data)->place() : std::nullopt;
        const auto* file = place ? dynamic_cast<const UnchangedFile*>(place->store.get()) : nullptr;
        return file == nullptr || file->isUnchanged();
    });
}

bool writeBlob(int target, const Blob& data) {
    const auto place = data.place();
    if (const auto* file = place ? dynamic_cast<const UnchangedFile*>(place->store.get()) : nullptr) {
        return file->copyTo(target, place->offset, data.size());
    }
    const SharedBytes bytes = data.bytes();
    if (!bytes) {
        errno = EIO;
        return false;
    }
    return writeAll(target, {reinterpret_cast<const char*>(bytes->data()), bytes->size()});
}

bool writePieces(int target, const EncodedArchive& archive) {
    for (std::size_t index = 0; index < archive.texts.size(); ++index) {
        if (!writeAll(target, archive.texts[index]) ||
            (index < archive.data.size() && !writeBlob(target, *archive.data[index]))) {
            return false;
        }
    }
    return !archive.texts.empty();
}

// From now on the data are in this file, of which the archive is the whole.
void moveData(const EncodedArchive& archive, const std::shared_ptr<const UnchangedFile>& file) {
    std::uint64_t offset = 0;
    for (std::size_t index = 0; index < archive.data.size(); ++index) {
        offset += archive.texts[index].size();
        archive.data[index]->moveTo({file, offset});
        offset += archive.data[index]->size();
    }
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
    UniqueFd file(openat(folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
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
        decoded = decodeArchive(objectClass, std::make_shared<const UnchangedFile>(std::move(file)));
    }
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
    std::vector<ArchiveObject> readable;
    const auto lost =
        objects.size() - static_cast<std::size_t>(std::count_if(objects.begin(), objects.end(), isReadable));
    if (lost > 0) {
        complain("somebody has written into " + path + "; " + std::to_string(lost) +
                 " records that were there are lost");
        std::copy_if(objects.begin(), objects.end(), std::back_inserter(readable), isReadable);
    }
    const EncodedArchive encoded = encodeArchive(objectClass, lost > 0 ? readable : objects);
    // One name only, so that nothing piles up when the machine stops in the middle again and again.
    const std::string fresh = name + ".new";
    unlinkat(folder.get(), fresh.c_str(), 0);
    UniqueFd file(openat(folder.get(), fresh.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, privateFile));
    // Whatever the umask took away or left.
    const bool written = file && fchmod(file.get(), privateFile) == 0 && writePieces(file.get(), encoded) &&
                         fsync(file.get()) == 0 &&
                         renameat(folder.get(), fresh.c_str(), folder.get(), name.c_str()) == 0;
    if (!written) {
        complain("cannot write " + path + ": " + lastErrorText());
        if (file) {
            unlinkat(folder.get(), fresh.c_str(), 0);
        }
        return false;
    }
    moveData(encoded, std::make_shared<const UnchangedFile>(std::move(file)));
    fsync(folder.get());
    return true;
}

} // namespace rb
