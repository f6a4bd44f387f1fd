#include "tests/macos/runtime/objects.h"

#include <Block.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <set>
#include <unordered_map>
#include <vector>

extern "C" purlock::runtime::Class constantStringClass asm("OBJC_CLASS_$_ConstantString");

namespace purlock::runtime {

namespace {

constexpr long aliveMark = 0x5055524C4F434B;

/// What stands before each object.
struct alignas(16) Header {
    long references;
    long mark;
};

Header* headerOf(Object object) {
    return reinterpret_cast<Header*>(static_cast<char*>(object) - sizeof(Header));
}

/// Classes and constant strings are there for ever.
bool isCounted(Object object) {
    return classOf(object) != &constantStringClass && !isClass(object);
}

struct State {
    std::recursive_mutex mutex;
    std::unordered_map<Object, std::set<Object*>> weakReferences;
    std::map<std::string, long> live;
};

State& state() {
    static State& instance = *new State;
    return instance;
}

[[noreturn]] void stop(const char* what, Object object) {
    std::fprintf(stderr, "Objective-C: %s (%p)\n", what, object);
    std::abort();
}

template <typename Function>
Function as(Method method) {
    return reinterpret_cast<Function>(method);
}

/// C++ members of an object: made from the root down, destroyed the other way.
void construct(Object object, const Class* type) {
    if (type == nullptr) return;
    construct(object, type->superclass);
    if (const Method method = ownMethodOf(type, ".cxx_construct")) {
        as<Object (*)(Object, Selector)>(method)(object, ".cxx_construct");
    }
}

void destruct(Object object, const Class* type) {
    for (; type != nullptr; type = type->superclass) {
        if (const Method method = ownMethodOf(type, ".cxx_destruct")) {
            as<void (*)(Object, Selector)>(method)(object, ".cxx_destruct");
        }
    }
}

/// Objects that are released when the pool is popped.
thread_local std::vector<Object> pool;

void forgetWeak(Object* reference) {
    const auto known = state().weakReferences.find(*reference);
    if (known != state().weakReferences.end()) known->second.erase(reference);
}

}  // namespace

std::map<std::string, long> liveObjects() {
    const std::lock_guard lock(state().mutex);
    return state().live;
}

long liveObjects(const std::string& className) {
    const auto live = liveObjects();
    const auto found = live.find(className);
    return found == live.end() ? 0 : found->second;
}

std::size_t autoreleased() {
    return pool.size();
}

void stopIfGone(Object object, Selector selector) {
    if (isCounted(object) && headerOf(object)->mark != aliveMark) stop(selector, object);
}

}  // namespace purlock::runtime

using namespace purlock::runtime;

extern "C" {

// Making and ending.

/// What the root class's alloc calls.
Object runtime_alloc(Class* type) {
    const std::size_t size = realizedSize(type);
    auto* const header = static_cast<Header*>(std::calloc(1, sizeof(Header) + size));
    *header = {1, aliveMark};
    const Object object = header + 1;
    *static_cast<Class**>(object) = type;
    construct(object, type);
    const std::lock_guard lock(state().mutex);
    ++state().live[type->data->name];
    return object;
}

/// Through the class's own alloc, which may hand out an object of another class.
Object objc_alloc(Class* type) {
    return as<Object (*)(Class*, Selector)>(methodOf(type->isa, "alloc"))(type, "alloc");
}

Object objc_alloc_init(Class* type) {
    const Object object = objc_alloc(type);
    return as<Object (*)(Object, Selector)>(methodOf(classOf(object), "init"))(object, "init");
}

Object objc_opt_new(Class* type) {
    return objc_alloc_init(type);
}

/// What the root class's dealloc calls.
void runtime_dealloc(Object object) {
    {
        const std::lock_guard lock(state().mutex);
        const auto watchers = state().weakReferences.find(object);
        if (watchers != state().weakReferences.end()) {
            for (Object* const reference : watchers->second) *reference = nullptr;
            state().weakReferences.erase(watchers);
        }
        --state().live[classOf(object)->data->name];
    }
    destruct(object, classOf(object));
    headerOf(object)->mark = 0;
    std::free(headerOf(object));
}

// Counting.

Object objc_retain(Object object) {
    if (object == nullptr) return object;
    // A block on the stack stays there until it is copied; who retains it only borrows it.
    if (isBlockOnStack(object)) return object;
    if (isBlock(object)) return _Block_copy(object);
    if (!isCounted(object)) return object;
    const std::lock_guard lock(state().mutex);
    if (headerOf(object)->mark != aliveMark) stop("an object that is gone is retained", object);
    ++headerOf(object)->references;
    return object;
}

void objc_release(Object object) {
    if (object == nullptr) return;
    if (isBlock(object)) {
        _Block_release(object);
        return;
    }
    if (!isCounted(object)) return;
    {
        const std::lock_guard lock(state().mutex);
        Header* const header = headerOf(object);
        if (header->mark != aliveMark || header->references <= 0) stop("released once too often", object);
        if (--header->references > 0) return;
    }
    as<void (*)(Object, Selector)>(methodOf(classOf(object), "dealloc"))(object, "dealloc");
}

Object objc_retainBlock(Object block) {
    return block != nullptr ? _Block_copy(block) : nullptr;
}

void objc_storeStrong(Object* place, Object value) {
    objc_retain(value);
    const Object old = *place;
    *place = value;
    objc_release(old);
}

// Pools.

void* objc_autoreleasePoolPush() {
    return reinterpret_cast<void*>(pool.size() + 1);
}

void objc_autoreleasePoolPop(void* token) {
    const std::size_t size = reinterpret_cast<std::size_t>(token) - 1;
    while (pool.size() > size) {
        const Object object = pool.back();
        pool.pop_back();
        objc_release(object);
    }
}

Object objc_autorelease(Object object) {
    if (object != nullptr) pool.push_back(object);
    return object;
}

Object objc_autoreleaseReturnValue(Object object) {
    return objc_autorelease(object);
}

Object objc_retainAutorelease(Object object) {
    return objc_autorelease(objc_retain(object));
}

Object objc_retainAutoreleaseReturnValue(Object object) {
    return objc_retainAutorelease(object);
}

Object objc_retainAutoreleasedReturnValue(Object object) {
    return objc_retain(object);
}

Object objc_unsafeClaimAutoreleasedReturnValue(Object object) {
    return object;
}

// Weak references.

Object objc_storeWeak(Object* place, Object value) {
    const std::lock_guard lock(state().mutex);
    if (*place != nullptr) forgetWeak(place);
    *place = value;
    if (value != nullptr) state().weakReferences[value].insert(place);
    return value;
}

Object objc_initWeak(Object* place, Object value) {
    *place = nullptr;
    return objc_storeWeak(place, value);
}

void objc_destroyWeak(Object* place) {
    objc_storeWeak(place, nullptr);
}

Object objc_loadWeakRetained(Object* place) {
    const std::lock_guard lock(state().mutex);
    const Object object = *place;
    if (object == nullptr || headerOf(object)->references <= 0) return nullptr;
    return objc_retain(object);
}

Object objc_loadWeak(Object* place) {
    return objc_autorelease(objc_loadWeakRetained(place));
}

void objc_copyWeak(Object* to, Object* from) {
    const Object object = objc_loadWeakRetained(from);
    objc_initWeak(to, object);
    objc_release(object);
}

void objc_moveWeak(Object* to, Object* from) {
    objc_copyWeak(to, from);
    objc_destroyWeak(from);
}

// Questions that the compiler asks without a message.

Class* objc_opt_class(Object object) {
    if (object == nullptr) return nullptr;
    return isClass(object) ? static_cast<Class*>(object) : classOf(object);
}

Object objc_opt_self(Object object) {
    return object;
}

bool objc_opt_isKindOfClass(Object object, Class* wanted) {
    if (object == nullptr) return false;
    for (const Class* type = classOf(object); type != nullptr; type = type->superclass) {
        if (type == wanted) return true;
    }
    return false;
}

bool objc_opt_respondsToSelector(Object object, Selector selector) {
    return object != nullptr && methodOf(classOf(object), selector) != nullptr;
}

// Properties.

Object objc_getProperty(Object self, Selector, long offset, bool) {
    return objc_retainAutorelease(*reinterpret_cast<Object*>(static_cast<char*>(self) + offset));
}

static void setProperty(Object self, long offset, Object value, bool copies) {
    auto* const place = reinterpret_cast<Object*>(static_cast<char*>(self) + offset);
    const Method copy =
        copies && value != nullptr && !isBlock(value) ? methodOf(classOf(value), "copy") : nullptr;
    const Object kept = copy != nullptr ? as<Object (*)(Object, Selector)>(copy)(value, "copy")
                        : value != nullptr && isBlock(value) ? _Block_copy(value)
                                                             : objc_retain(value);
    const Object old = *place;
    *place = kept;
    objc_release(old);
}

void objc_setProperty_atomic(Object self, Selector, Object value, long offset) {
    setProperty(self, offset, value, false);
}

void objc_setProperty_nonatomic(Object self, Selector, Object value, long offset) {
    setProperty(self, offset, value, false);
}

void objc_setProperty_atomic_copy(Object self, Selector, Object value, long offset) {
    setProperty(self, offset, value, true);
}

void objc_setProperty_nonatomic_copy(Object self, Selector, Object value, long offset) {
    setProperty(self, offset, value, true);
}

void objc_copyStruct(void* to, const void* from, long size, bool, bool) {
    std::memcpy(to, from, static_cast<std::size_t>(size));
}

void objc_enumerationMutation(Object object) {
    stop("changed while it is enumerated", object);
}

// Exceptions are those of C++: a stand-in throws one where the real class would raise.

void* __cxa_begin_catch(void* exception) noexcept;
void __cxa_end_catch();

void* objc_begin_catch(void* exception) {
    return __cxa_begin_catch(exception);
}

void objc_end_catch() {
    __cxa_end_catch();
}

[[noreturn]] void objc_terminate() {
    std::abort();
}
}
