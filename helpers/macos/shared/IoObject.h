#pragma once

#import <IOKit/IOKitLib.h>

#include <utility>

namespace rb {

// One reference to an object of I/O Kit, released with it.
class IoObject {
public:
    IoObject() = default;
    // Takes over the reference; 0 is nothing.
    explicit IoObject(io_object_t object)
        : object_(object) {}
    IoObject(IoObject&& other) noexcept
        : object_(std::exchange(other.object_, 0)) {}
    IoObject& operator=(IoObject&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~IoObject() {
        if (object_ != 0) {
            IOObjectRelease(object_);
        }
    }

    explicit operator bool() const { return object_ != 0; }
    io_object_t get() const { return object_; }
    // The next one of an iterator.
    IoObject next() const { return IoObject(IOIteratorNext(object_)); }

private:
    io_object_t object_ = 0;
};

} // namespace rb
