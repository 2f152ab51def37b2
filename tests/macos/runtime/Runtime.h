#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

// A small Objective-C runtime for ELF objects compiled with -fobjc-runtime=macosx: classes, reference counts, weak
// references, autorelease pools and message sending, enough to execute ARC code in tests. One thread only.
namespace rb::objc {

// The structures the compiler emits; their layout is the ABI's.
struct Method {
    const char* selector;
    const char* types;
    void* implementation;
};
struct MethodList {
    std::uint32_t entrySize;
    std::uint32_t count;
    Method first[1];
};
struct InstanceVariable {
    std::int32_t* offset;
    const char* name;
    const char* type;
    std::uint32_t alignment;
    std::uint32_t size;
};
struct InstanceVariableList {
    std::uint32_t entrySize;
    std::uint32_t count;
    InstanceVariable first[1];
};
struct Class;
struct ClassData {
    std::uint32_t flags;
    std::uint32_t start;
    std::uint32_t size;
    std::uint32_t reserved;
    const void* layout;
    const char* name;
    MethodList* methods;
    const void* protocols;
    InstanceVariableList* variables;
    const void* weakLayout;
    const void* properties;
};
struct Class {
    Class* isa;
    Class* super;
    void* cache;
    void* vtable;
    ClassData* data;
    bool isMeta() const { return (data->flags & 1) != 0; }
    const char* name() const { return data->name; }
};
struct Object {
    Class* isa;
};
using Selector = const char*; // interned: equal selectors are equal pointers

Selector selector(const char* name);
Class* classNamed(const char* name); // null when there is none
// The class that implements the selector for instances of `start`, and the implementation; nulls when none does.
struct Found {
    Class* owner = nullptr;
    void* implementation = nullptr;
};
Found find(Class* start, Selector selector);

bool isBlock(const Object* object);
bool isClass(const Object* object);
bool isAlive(const Object* object); // an instance that has been allocated and not freed

Object* allocate(Class* cls); // reference count 1
Object* retain(Object* object);
void release(Object* object);
Object* autorelease(Object* object);
long retainCount(const Object* object);

// How many instances of each class are alive now.
std::map<std::string, long> liveInstances();
// Is told of each instance just before its memory is freed.
void onFree(std::function<void(Object*)> observer);

void storeWeak(Object** slot, Object* object);
void destroyWeak(Object** slot);

// The registers and stack of a call that reached one of the entry points in Entry.s, and where its result goes.
struct Frame {
    double vectors[8][2];
    std::uint64_t vectorCount;
    std::uint64_t integers[6];
    std::uint64_t* stack;
    std::uint64_t integerResults[2];
    double vectorResults[2][2];
};
static_assert(sizeof(Frame) == 240);

enum SendFlags : std::uint64_t { Recorded = 1, StructReturn = 2, Super = 4 };

// What the fakes do with a message: handle it (and fill the frame's results) or leave it to the implementation.
// `found` has no implementation when nobody wrote one. Returns whether the message was handled.
using MessageFilter = bool (*)(Frame& frame, Object* receiver, Class* cls, Selector selector, std::uint64_t flags,
                               const Found& found);
void setMessageFilter(MessageFilter filter);

} // namespace rb::objc
