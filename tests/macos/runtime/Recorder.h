#pragma once

#include "tests/macos/Fakes.h"

#include <functional>
#include <string>
#include <vector>

// What the hand-written fakes ask of the recorder.
namespace rb::fake {

// Properties of a faked object by name: what its setters stored and its getters give.
void setProperty(id receiver, const std::string& name, id value);
void setPropertyBytes(id receiver, const std::string& name, const void* bytes, std::size_t size);
id property(id receiver, const std::string& name);
long integerProperty(id receiver, const std::string& name);

// Runs at each reset().
void onReset(std::function<void()> work);

// An entry for a C function written by hand, with its arguments.
class Recorded {
public:
    template <std::integral T>
    Recorded(T value)
        : integer_(static_cast<long>(value)) {}
    Recorded(id object)
        : object_(object)
        , isObject_(true) {}
    long integer() const { return isObject_ ? reinterpret_cast<long>((__bridge void*)object_) : integer_; }
    bool isObject() const { return isObject_; }

private:
    long integer_ = 0;
    id object_ = nil;
    bool isObject_ = false;
};
void recordFunction(const std::string& name, const std::vector<Recorded>& arguments);

// Given by Foundation.mm: an object standing for an opaque CoreFoundation type, and the text of any object.
id makeCoreObject(const std::string& typeName);
std::string describeValue(id object);

} // namespace rb::fake
