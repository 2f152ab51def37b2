#include "platform/Blob.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

namespace rb {

Blob::Blob(SharedBytes bytes)
    : size_(bytes->size())
    , inMemory_(std::move(bytes)) {}

Blob::Blob(Place place, std::size_t size)
    : size_(size)
    , place_(std::move(place)) {}

std::optional<Blob::Place> Blob::place() const {
    const std::lock_guard lock(mutex_);
    return inMemory_ ? std::nullopt : std::optional(place_);
}

void Blob::moveTo(Place place) const {
    SharedBytes before; // let go without the lock
    const std::lock_guard lock(mutex_);
    before = std::exchange(inMemory_, nullptr);
    place_ = std::move(place);
}

SharedBytes Blob::bytes() const {
    {
        const std::lock_guard lock(mutex_);
        if (inMemory_) {
            return inMemory_;
        }
    }
    auto copy = std::make_shared<Bytes>(size_);
    return read(0, *copy) ? copy : nullptr;
}

bool Blob::read(std::size_t offset, std::span<std::uint8_t> into) const {
    if (offset > size_ || into.size() > size_ - offset) {
        return false;
    }
    SharedBytes memory;
    Place place;
    {
        const std::lock_guard lock(mutex_);
        memory = inMemory_;
        place = place_;
    }
    if (memory) {
        std::copy_n(memory->begin() + static_cast<std::ptrdiff_t>(offset), into.size(), into.begin());
        return true;
    }
    return place.store->read(place.offset + offset, into);
}

// Of samples from all over: pictures of one size are common, and those that differ nearly always differ there.
std::optional<std::size_t> Blob::fingerprint() const {
    {
        const std::lock_guard lock(mutex_);
        if (fingerprint_) {
            return fingerprint_;
        }
    }
    constexpr std::size_t samples = 64;
    constexpr std::size_t sampleSize = 64;
    Bytes sampled(std::min(size_, samples * sampleSize));
    if (sampled.size() == size_) {
        if (!read(0, sampled)) {
            return std::nullopt;
        }
    } else {
        for (std::size_t sample = 0; sample < samples; ++sample) {
            const std::size_t offset = (size_ - sampleSize) / (samples - 1) * sample;
            if (!read(offset, std::span(sampled).subspan(sample * sampleSize, sampleSize))) {
                return std::nullopt;
            }
        }
    }
    const std::size_t hash =
        std::hash<std::string_view>{}({reinterpret_cast<const char*>(sampled.data()), sampled.size()});
    const std::lock_guard lock(mutex_);
    fingerprint_ = hash;
    return hash;
}

bool Blob::sameAs(const Blob& other) const {
    if (this == &other) {
        return true;
    }
    if (size_ != other.size_) {
        return false;
    }
    const auto print = fingerprint();
    if (!print || print != other.fingerprint()) {
        return false;
    }
    constexpr std::size_t pieceSize = 65'536;
    Bytes mine(std::min(size_, pieceSize));
    Bytes theirs(mine.size());
    for (std::size_t offset = 0; offset < size_; offset += mine.size()) {
        const std::size_t length = std::min(mine.size(), size_ - offset);
        const std::span<std::uint8_t> piece(mine.data(), length);
        const std::span<std::uint8_t> otherPiece(theirs.data(), length);
        if (!read(offset, piece) || !other.read(offset, otherPiece) || !std::ranges::equal(piece, otherPiece)) {
            return false;
        }
    }
    return true;
}

} // namespace rb
