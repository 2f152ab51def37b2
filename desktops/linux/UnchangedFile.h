#pragma once

#include "desktops/linux/UniqueFd.h"
#include "platform/Blob.h"

#include <ctime>

namespace rb {

// A file that stays open: what it holds can be read long after its name is another file's, but no longer once somebody
// has written into it. Any thread.
class UnchangedFile final : public ByteStore {
public:
    // Open for reading, with its final contents.
    explicit UnchangedFile(UniqueFd file);

    std::uint64_t size() const override { return size_; }
    bool read(std::uint64_t offset, std::span<std::uint8_t> into) const override;
    // Appends some of it to another file, without taking it through memory where the system can do so. False with
    // errno.
    bool copyTo(int target, std::uint64_t offset, std::uint64_t length) const;
    // Still as when it was opened.
    bool isUnchanged() const;

private:
    UniqueFd file_;
    std::uint64_t size_ = 0;
    std::timespec changed_{}; // its contents
};

} // namespace rb
