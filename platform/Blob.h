#pragma once

#include "platform/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>

namespace rb {

// A file, say, from which bytes can be read again and again. What it holds never changes. Any thread.
class ByteStore {
public:
    virtual ~ByteStore() = default;

    virtual std::uint64_t size() const = 0;
    // Fills all of `into`. False when that can't be done, or when the contents aren't what they were; `into` then holds
    // anything.
    virtual bool read(std::uint64_t offset, std::span<std::uint8_t> into) const = 0;
};

// Bytes that are kept once, however many hold them: in memory or, when a store has them too, only there, so that large
// ones cost no memory while nobody looks at them. The contents never change. Any thread.
class Blob {
public:
    struct Place {
        std::shared_ptr<const ByteStore> store;
        std::uint64_t offset = 0;
    };

    // Not null.
    explicit Blob(SharedBytes bytes);
    Blob(Place place, std::size_t size);

    std::size_t size() const { return size_; }
    // Read now unless they are in memory, which may wait for a disk. Null when the store can't give them any more.
    SharedBytes bytes() const;
    // Some of them, as bytes().
    bool read(std::size_t offset, std::span<std::uint8_t> into) const;
    // Whether the contents are the same; false when that can't be found out. Reads little of what differs.
    bool sameAs(const Blob& other) const;

    // Nothing while they are in memory.
    std::optional<Place> place() const;
    // From now on they are there, where the same bytes must be; the memory is let go.
    void moveTo(Place place) const;

private:
    std::optional<std::size_t> fingerprint() const;

    std::size_t size_;
    mutable std::mutex mutex_; // for what follows
    mutable SharedBytes inMemory_;
    mutable Place place_; // unless in memory
    mutable std::optional<std::size_t> fingerprint_;
};

using SharedBlob = std::shared_ptr<const Blob>;

} // namespace rb
