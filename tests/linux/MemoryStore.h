#pragma once

#include "platform/Blob.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace rb {

// A file that is only in memory.
class MemoryStore final : public ByteStore {
public:
    explicit MemoryStore(std::string contents)
        : contents_(std::move(contents)) {}

    std::uint64_t size() const override { return contents_.size(); }
    bool read(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        if (offset > contents_.size() || into.size() > contents_.size() - offset) {
            return false;
        }
        std::copy_n(contents_.begin() + static_cast<std::ptrdiff_t>(offset), into.size(), into.begin());
        return true;
    }

private:
    std::string contents_;
};

} // namespace rb
