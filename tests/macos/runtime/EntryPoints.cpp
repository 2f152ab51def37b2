// The functions that the compiler calls in ARC code, and those of the runtime that programs call. Their names and
// duties are those that clang documents for ARC.
#include "tests/macos/runtime/RuntimeState.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace rb::objc {
namespace {

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
