#pragma once

#include "tests/macos/runtime/Runtime.h"

#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// What Runtime.cpp shares with EntryPoints.cpp, the functions that the compiler calls.
namespace rb::objc {

using MethodTable = std::unordered_map<Selector, void*>;

// Everything the runtime remembers. Made before any other constructor of the program and never destroyed, because
// static objects of the program may still send messages then.
struct State {
    std::unordered_set<std::string> selectors;
    std::unordered_map<Class*, MethodTable> methods;
    std::unordered_map<std::string, Class*> classes;
    std::unordered_set<const Class*> known; // classes and metaclasses
    std::unordered_map<const Object*, long> counts;
    std::unordered_map<Object*, std::set<Object**>> weak;
    std::unordered_map<const Object*, std::map<const void*, Object*>> associated;
    std::vector<std::vector<Object*>> pools;
    std::vector<std::function<void(Object*)>> freeObservers;
    MessageFilter filter = nullptr;
};
extern State* state;

// The implementation to jump to, or null when the results are in the frame already.
void* dispatch(Frame& frame, std::uint64_t flags);
// A new instance, sent init.
Object* initialized(Class* cls, std::uint64_t flags);

} // namespace rb::objc
