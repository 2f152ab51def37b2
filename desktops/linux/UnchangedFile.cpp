#include "desktops/linux/UnchangedFile.h"

#include "helpers/shared/WriteAll.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace rb {

namespace {

// Small enough for nobody to wait long for the processor or the disk.
constexpr std::uint64_t pieceSize = 524'288;

} // namespace

UnchangedFile::UnchangedFile(UniqueFd file)
    : file_(std::move(file)) {
    struct stat status {};
    if (fstat(file_.get(), &status) == 0) {
        size_ = static_cast<std::uint64_t>(status.st_size);
        changed_ = status.st_mtim;
    }
}

bool UnchangedFile::isUnchanged() const {
    struct stat status {};
    return fstat(file_.get(), &status) == 0 && static_cast<std::uint64_t>(status.st_size) == size_ &&
           status.st_mtim.tv_sec == changed_.tv_sec && status.st_mtim.tv_nsec == changed_.tv_nsec;
}

bool UnchangedFile::read(std::uint64_t offset, std::span<std::uint8_t> into) const {
    std::size_t filled = 0;
    while (filled < into.size()) {
        const ssize_t count =
            pread(file_.get(), into.data() + filled, into.size() - filled, static_cast<off_t>(offset + filled));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        filled += static_cast<std::size_t>(count);
    }
    return isUnchanged();
}

bool UnchangedFile::copyTo(int target, std::uint64_t offset, std::uint64_t length) const {
    const std::uint64_t end = offset + length;
    auto from = static_cast<off_t>(offset);
    while (static_cast<std::uint64_t>(from) < end) {
        const std::uint64_t piece = std::min(pieceSize, end - static_cast<std::uint64_t>(from));
        const ssize_t count = copy_file_range(file_.get(), &from, target, nullptr, piece, 0);
        if (count > 0 || (count < 0 && errno == EINTR)) {
            continue;
        }
        if (count < 0 && errno != EXDEV && errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) {
            return false;
        }
        // Not between these file systems, or at its end.
        std::vector<std::uint8_t> bytes(piece);
        if (!read(static_cast<std::uint64_t>(from), bytes)) {
            errno = EIO;
            return false;
        }
        if (!writeAll(target, {reinterpret_cast<const char*>(bytes.data()), bytes.size()})) {
            return false;
        }
        from += static_cast<off_t>(piece);
    }
    if (!isUnchanged()) {
        errno = EIO;
        return false;
    }
    return true;
}

} // namespace rb
