#include "tests/macos/runtime/RuntimeState.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

// Sections of all objects, bounded by symbols of the linker.
extern "C" {
extern rb::objc::Class* __start_objc_classlist[];
extern rb::objc::Class* __stop_objc_classlist[];
extern const char* __start_objc_selrefs[];
extern const char* __stop_objc_selrefs[];
struct Category {
    const char* name;
    rb::objc::Class* cls;
    rb::objc::MethodList* instanceMethods;
    rb::objc::MethodList* classMethods;
    const void* protocols;
    const void* properties;
};
extern Category* __start_objc_catlist[] __attribute__((weak));
extern Category* __stop_objc_catlist[] __attribute__((weak));
void* _Block_copy(const void*);
void _Block_release(const void*);
extern void* _NSConcreteStackBlock[];
extern void* _NSConcreteGlobalBlock[];
extern void* _NSConcreteMallocBlock[];
int _objc_empty_cache;
}

namespace rb::objc {

State* state;

namespace {

// The count of an object whose dealloc runs.
constexpr long Deallocating = 1L << 40;

void addMethods(Class* cls, MethodList* list) {
    if (!list)
        return;
    const std::size_t size = list->entrySize & 0xfffc;
    const char* entry = reinterpret_cast<const char*>(list->first);
    for (std::uint32_t i = 0; i < list->count; ++i, entry += size) {
        const auto* method = reinterpret_cast<const Method*>(entry);
        state->methods[cls][selector(method->selector)] = method->implementation;
    }
}

// The compiler can't know the size of a superclass from elsewhere: instance variables move behind it.
void slideInstanceVariables(Class* cls) {
    if (!cls->super || cls->data->start >= cls->super->data->size)
        return;
    const std::uint32_t shift = (cls->super->data->size - cls->data->start + 15) & ~15u;
    if (InstanceVariableList* list = cls->data->variables)
        for (std::uint32_t i = 0; i < list->count; ++i)
            if (list->first[i].offset)
                *list->first[i].offset += static_cast<std::int32_t>(shift);
    cls->data->start += shift;
    cls->data->size += shift;
}

void realize(Class* cls) {
    if (!cls || !state->known.insert(cls).second)
        return;
    realize(cls->super);
    state->known.insert(cls->isa);
    state->classes[cls->name()] = cls;
    addMethods(cls, cls->data->methods);
    addMethods(cls->isa, cls->isa->data->methods);
    slideInstanceVariables(cls);
}

__attribute__((constructor(101))) void boot() {
    state = new State;
    for (const char** reference = __start_objc_selrefs; reference < __stop_objc_selrefs; ++reference)
        *reference = selector(*reference);
    for (Class** cls = __start_objc_classlist; cls < __stop_objc_classlist; ++cls)
        realize(*cls);
    for (Category** category = __start_objc_catlist; category < __stop_objc_catlist; ++category) {
        addMethods((*category)->cls, (*category)->instanceMethods);
        addMethods((*category)->cls->isa, (*category)->classMethods);
    }
}

// Calls a method without arguments of exactly this class, if it has one of its own.
void callOwn(Object* object, Class* cls, Selector name) {
    const auto table = state->methods.find(cls);
    if (table == state->methods.end())
        return;
    const auto method = table->second.find(name);
    if (method != table->second.end())
        reinterpret_cast<void (*)(Object*, Selector)>(method->second)(object, name);
}

void construct(Object* object, Class* cls) {
    if (!cls)
        return;
    construct(object, cls->super);
    static const Selector name = selector(".cxx_construct");
    callOwn(object, cls, name);
}

void destroy(Object* object) {
    static const Selector deallocName = selector("dealloc");
    static const Selector destructName = selector(".cxx_destruct");
    // Weak references read nil from here on, and retains during dealloc don't matter any more.
    if (const auto weak = state->weak.find(object); weak != state->weak.end()) {
        for (Object** slot : weak->second)
            *slot = nullptr;
        state->weak.erase(weak);
    }
    state->counts[object] = Deallocating;
    if (const Found dealloc = find(object->isa, deallocName); dealloc.implementation)
        reinterpret_cast<void (*)(Object*, Selector)>(dealloc.implementation)(object, deallocName);
    for (Class* cls = object->isa; cls; cls = cls->super)
        callOwn(object, cls, destructName);
    if (const auto found = state->associated.find(object); found != state->associated.end()) {
        const auto values = std::move(found->second);
        state->associated.erase(found);
        for (const auto& [key, value] : values)
            release(value);
    }
    for (const auto& observer : state->freeObservers)
        observer(object);
    state->counts.erase(object);
    std::free(object);
}

[[noreturn]] void fail(const char* what, Object* receiver, Selector name) {
    Class* cls = isClass(receiver) ? reinterpret_cast<Class*>(receiver) : receiver->isa;
    std::fprintf(stderr, "%s: %c[%s %s]\n", what, isClass(receiver) ? '+' : '-', cls->name(), name);
    std::abort();
}

} // namespace

Selector selector(const char* name) {
    return state->selectors.insert(name).first->c_str();
}

Class* classNamed(const char* name) {
    const auto found = state->classes.find(name);
    return found == state->classes.end() ? nullptr : found->second;
}

Found find(Class* start, Selector name) {
    for (Class* cls = start; cls; cls = cls->super) {
        const auto table = state->methods.find(cls);
        if (table == state->methods.end())
            continue;
        const auto method = table->second.find(name);
        if (method != table->second.end())
            return {cls, method->second};
    }
    return {};
}

bool isBlock(const Object* object) {
    const void* isa = object ? object->isa : nullptr;
    return isa && (isa == _NSConcreteStackBlock || isa == _NSConcreteGlobalBlock || isa == _NSConcreteMallocBlock);
}

bool isClass(const Object* object) {
    return state->known.count(reinterpret_cast<const Class*>(object)) != 0;
}
bool isAlive(const Object* object) {
    return state->counts.count(object) != 0;
}

Object* allocate(Class* cls) {
    auto* object = static_cast<Object*>(std::calloc(1, cls->data->size));
    object->isa = cls;
    state->counts[object] = 1;
    construct(object, cls);
    return object;
}

Object* retain(Object* object) {
    if (isBlock(object))
        return static_cast<Object*>(_Block_copy(object));
    if (object)
        if (const auto count = state->counts.find(object); count != state->counts.end())
            ++count->second;
    return object;
}

void release(Object* object) {
    if (!object)
        return;
    if (isBlock(object)) {
        _Block_release(object);
        return;
    }
    const auto count = state->counts.find(object); // classes and constant strings aren't counted
    if (count != state->counts.end() && --count->second == 0)
        destroy(object);
}

Object* autorelease(Object* object) {
    if (object && !state->pools.empty())
        state->pools.back().push_back(object);
    return object;
}

long retainCount(const Object* object) {
    const auto count = state->counts.find(object);
    return count == state->counts.end() ? 0 : count->second;
}

std::map<std::string, long> liveInstances() {
    std::map<std::string, long> live;
    for (const auto& [object, count] : state->counts)
        ++live[object->isa->name()];
    return live;
}

void onFree(std::function<void(Object*)> observer) {
    state->freeObservers.push_back(std::move(observer));
}

void storeWeak(Object** slot, Object* object) {
    if (*slot)
        if (const auto old = state->weak.find(*slot); old != state->weak.end())
            old->second.erase(slot);
    if (isAlive(object) && state->counts[object] >= Deallocating)
        object = nullptr;
    *slot = object;
    if (isAlive(object))
        state->weak[object].insert(slot);
}

void destroyWeak(Object** slot) {
    storeWeak(slot, nullptr);
}

void setMessageFilter(MessageFilter filter) {
    state->filter = filter;
}

void* dispatch(Frame& frame, std::uint64_t flags) {
    std::uint64_t& receiverSlot = frame.integers[flags & StructReturn ? 1 : 0];
    const auto name = reinterpret_cast<Selector>(frame.integers[flags & StructReturn ? 2 : 1]);
    std::memset(frame.integerResults, 0, sizeof frame.integerResults);
    std::memset(frame.vectorResults, 0, sizeof frame.vectorResults);
    Class* start = nullptr;
    if (flags & Super) {
        struct SuperCall {
            Object* receiver;
            Class* cls;
        };
        const auto* call = reinterpret_cast<const SuperCall*>(receiverSlot);
        start = call->cls->super;
        receiverSlot = reinterpret_cast<std::uint64_t>(call->receiver);
    }
    auto* receiver = reinterpret_cast<Object*>(receiverSlot);
    if (!receiver)
        return nullptr;
    if (isBlock(receiver)) {
        if (name != selector("copy")) {
            std::fprintf(stderr, "a block got the message %s\n", name);
            std::abort();
        }
        frame.integerResults[0] = reinterpret_cast<std::uint64_t>(retain(receiver));
        return nullptr;
    }
    if (!start)
        start = receiver->isa;
    const Found found = find(start, name);
    if (state->filter && state->filter(frame, receiver, start, name, flags, found))
        return nullptr;
    if (!found.implementation)
        fail("unrecognized selector", receiver, name);
    return found.implementation;
}

Object* initialized(Class* cls, std::uint64_t flags) {
    static const Selector name = selector("init");
    Frame frame{};
    frame.integers[0] = reinterpret_cast<std::uint64_t>(allocate(cls));
    frame.integers[1] = reinterpret_cast<std::uint64_t>(name);
    if (void* implementation = dispatch(frame, flags))
        return reinterpret_cast<Object* (*)(std::uint64_t, Selector)>(implementation)(frame.integers[0], name);
    return reinterpret_cast<Object*>(frame.integerResults[0]);
}

} // namespace rb::objc
