#pragma once

#include "tests/macos/Fakes.h"

#include <functional>
#include <string>

// What the hand-written fakes ask of the recorder.
namespace rb::fake {

// Properties of a faked object by name: what its setters stored and its getters give.
void setProperty(id receiver, const std::string& name, id value);
void setPropertyBytes(id receiver, const std::string& name, const void* bytes, std::size_t size);
id property(id receiver, const std::string& name);
long integerProperty(id receiver, const std::string& name);

// Runs at each reset().
void onReset(std::function<void()> work);

// An entry for a C function written by hand.
void recordFunction(const std::string& name, const std::string& arguments);

// Given by Foundation.mm: an object standing for an opaque CoreFoundation type, and the text of any object.
id makeCoreObject(const std::string& typeName);
std::string describeValue(id object);

} // namespace rb::fake
