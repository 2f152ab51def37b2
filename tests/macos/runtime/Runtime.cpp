#include "tests/macos/runtime/Runtime.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <vector>

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
namespace {

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
State* state;

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

namespace {

// The implementation to jump to, or null when the results are in the frame already.
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

Object** variableAt(Object* object, long offset) {
    return reinterpret_cast<Object**>(reinterpret_cast<char*>(object) + offset);
}

void setVariable(Object* object, long offset, Object* value, bool copy) {
    Object** slot = variableAt(object, offset);
    Object* kept = retain(value);
    if (copy && value && !isBlock(value)) {
        static const Selector name = selector("copy");
        const Found found = find(value->isa, name);
        release(kept);
        kept = reinterpret_cast<Object* (*)(Object*, Selector)>(found.implementation)(value, name);
    }
    Object* old = *slot;
    *slot = kept;
    release(old);
}

} // namespace
} // namespace rb::objc

// The functions the compiler calls. Their names and duties are those of the ARC specification of clang.
using rb::objc::Class;
using rb::objc::Object;
using rb::objc::Selector;
extern "C" {
void* objc_runtime_dispatch(rb::objc::Frame* frame, std::uint64_t flags) {
    return rb::objc::dispatch(*frame, flags);
}

Object* objc_retain(Object* object) {
    return rb::objc::retain(object);
}
Object* objc_retainBlock(Object* object) {
    return rb::objc::retain(object);
}
void objc_release(Object* object) {
    rb::objc::release(object);
}
Object* objc_autorelease(Object* object) {
    return rb::objc::autorelease(object);
}
Object* objc_autoreleaseReturnValue(Object* object) {
    return rb::objc::autorelease(object);
}
Object* objc_retainAutorelease(Object* object) {
    return rb::objc::autorelease(rb::objc::retain(object));
}
Object* objc_retainAutoreleaseReturnValue(Object* object) {
    return objc_retainAutorelease(object);
}
// As the system's runtime does: a result that was autoreleased just now is handed over, so it doesn't live longer
// than its new owner wants.
Object* objc_retainAutoreleasedReturnValue(Object* object) {
    auto& pools = rb::objc::state->pools;
    if (!object || pools.empty() || pools.back().empty() || pools.back().back() != object) {
        return rb::objc::retain(object);
    }
    pools.back().pop_back();
    return object;
}
Object* objc_claimAutoreleasedReturnValue(Object* object) {
    return objc_retainAutoreleasedReturnValue(object);
}
Object* objc_unsafeClaimAutoreleasedReturnValue(Object* object) {
    return object;
}
void* objc_autoreleasePoolPush() {
    auto& pools = rb::objc::state->pools;
    pools.emplace_back();
    return reinterpret_cast<void*>(pools.size());
}
void objc_autoreleasePoolPop(void* token) {
    auto& pools = rb::objc::state->pools;
    const auto depth = reinterpret_cast<std::size_t>(token);
    while (pools.size() >= depth && !pools.empty()) {
        // Objects autoreleased by these very releases belong to the same pool.
        while (!pools.back().empty()) {
            const auto objects = std::move(pools.back());
            pools.back().clear();
            for (Object* object : objects)
                rb::objc::release(object);
        }
        pools.pop_back();
    }
}
void objc_storeStrong(Object** slot, Object* object) {
    Object* old = *slot;
    *slot = rb::objc::retain(object);
    rb::objc::release(old);
}
Object* objc_storeWeak(Object** slot, Object* object) {
    rb::objc::storeWeak(slot, object);
    return object;
}
Object* objc_initWeak(Object** slot, Object* object) {
    *slot = nullptr;
    return objc_storeWeak(slot, object);
}
void objc_destroyWeak(Object** slot) {
    rb::objc::destroyWeak(slot);
}
Object* objc_loadWeakRetained(Object** slot) {
    return rb::objc::retain(*slot);
}
Object* objc_loadWeak(Object** slot) {
    return objc_retainAutorelease(*slot);
}
void objc_copyWeak(Object** to, Object** from) {
    objc_initWeak(to, *from);
}
void objc_moveWeak(Object** to, Object** from) {
    objc_initWeak(to, *from);
    objc_destroyWeak(from);
}

Object* objc_alloc(Class* cls) {
    return rb::objc::allocate(cls);
}
Object* objc_allocWithZone(Class* cls) {
    return rb::objc::allocate(cls);
}
Object* objc_alloc_init(Class* cls) {
    return rb::objc::initialized(cls, 0);
}
Object* objc_alloc_init_recorded(Class* cls) {
    return rb::objc::initialized(cls, rb::objc::Recorded);
}
Object* objc_opt_new(Class* cls) {
    return rb::objc::initialized(cls, 0);
}
Object* objc_opt_new_recorded(Class* cls) {
    return rb::objc::initialized(cls, rb::objc::Recorded);
}
Object* objc_opt_self(Object* object) {
    return object;
}
Class* objc_opt_class(Object* object) {
    if (!object)
        return nullptr;
    return rb::objc::isClass(object) ? reinterpret_cast<Class*>(object) : object->isa;
}
bool objc_opt_isKindOfClass(Object* object, Class* wanted) {
    for (Class* cls = object ? object->isa : nullptr; cls; cls = cls->super)
        if (cls == wanted)
            return true;
    return false;
}

Object* objc_getProperty(Object* object, Selector, long offset, bool) {
    return objc_retainAutorelease(*rb::objc::variableAt(object, offset));
}
void objc_setProperty(Object* object, Selector, long offset, Object* value, bool, bool copy) {
    rb::objc::setVariable(object, offset, value, copy);
}
void objc_setProperty_atomic(Object* object, Selector, Object* value, long offset) {
    rb::objc::setVariable(object, offset, value, false);
}
void objc_setProperty_nonatomic(Object* object, Selector, Object* value, long offset) {
    rb::objc::setVariable(object, offset, value, false);
}
void objc_setProperty_atomic_copy(Object* object, Selector, Object* value, long offset) {
    rb::objc::setVariable(object, offset, value, true);
}
void objc_setProperty_nonatomic_copy(Object* object, Selector, Object* value, long offset) {
    rb::objc::setVariable(object, offset, value, true);
}
void objc_copyStruct(void* to, const void* from, long size, bool, bool) {
    std::memmove(to, from, static_cast<std::size_t>(size));
}
Object* objc_getAssociatedObject(Object* object, const void* key) {
    return objc_retainAutorelease(rb::objc::state->associated[object][key]);
}
void objc_setAssociatedObject(Object* object, const void* key, Object* value, unsigned long) {
    Object*& slot = rb::objc::state->associated[object][key];
    Object* old = slot;
    slot = rb::objc::retain(value);
    rb::objc::release(old);
}
void objc_enumerationMutation(Object*) {
    std::fputs("a collection was changed while it was enumerated\n", stderr);
    std::abort();
}
int objc_sync_enter(Object*) {
    return 0;
}
int objc_sync_exit(Object*) {
    return 0;
}

void* __cxa_begin_catch(void*) noexcept;
void __cxa_end_catch();
void* objc_begin_catch(void* exception) {
    return __cxa_begin_catch(exception);
}
void objc_end_catch() {
    __cxa_end_catch();
}
// Nothing here throws NSExceptions, but handlers for them refer to their type.
void* rb_objc_no_exception_type[3] asm("OBJC_EHTYPE_$_NSException");
void* rb_objc_no_id_type[3] asm("OBJC_EHTYPE_id");
[[noreturn]] void objc_exception_throw(Object* exception) {
    std::fprintf(stderr, "an Objective-C exception was thrown: %s\n", exception ? exception->isa->name() : "nil");
    std::abort();
}
[[noreturn]] void objc_terminate() {
    std::abort();
}

Class* object_getClass(Object* object) {
    return object ? object->isa : nullptr;
}
const char* class_getName(Class* cls) {
    return cls ? cls->name() : "nil";
}
const char* object_getClassName(Object* object) {
    return class_getName(object_getClass(object));
}
Class* class_getSuperclass(Class* cls) {
    return cls ? cls->super : nullptr;
}
Class* objc_getClass(const char* name) {
    return rb::objc::classNamed(name);
}
Class* objc_lookUpClass(const char* name) {
    return rb::objc::classNamed(name);
}
Selector sel_registerName(const char* name) {
    return rb::objc::selector(name);
}
const char* sel_getName(Selector name) {
    return name;
}
bool class_respondsToSelector(Class* cls, Selector name) {
    return rb::objc::find(cls, name).implementation != nullptr;
}
}
