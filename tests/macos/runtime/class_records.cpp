#include "tests/macos/runtime/class_records.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>

#include "tests/macos/runtime/objects.h"

extern "C" {
void* _objc_empty_cache = nullptr;
extern void* _NSConcreteStackBlock[];
extern void* _NSConcreteMallocBlock[];
extern void* _NSConcreteGlobalBlock[];
}

namespace purlock::runtime {

namespace {

constexpr std::uint32_t flagBits = 3;

/// The entries of a list, whose size is the list's own.
template <typename Record, typename List>
const Record* entry(const List* list, std::uint32_t index) {
    const auto* const first = reinterpret_cast<const char*>(&list->first);
    return reinterpret_cast<const Record*>(first + std::size_t{index} * (list->entrySize & ~flagBits));
}

void moveIvars(const ClassData& data, std::uint32_t by) {
    if (data.ivars == nullptr) return;
    for (std::uint32_t i = 0; i < data.ivars->count; ++i) *entry<IvarRecord>(data.ivars, i)->offset += by;
}

[[noreturn]] void unrecognized(const Class* type, Selector selector) {
    std::fprintf(stderr, "unrecognized selector %c[%s %s]\n",
                 (type->data->flags & ClassData::isMetaclass) != 0 ? '+' : '-', type->data->name, selector);
    std::abort();
}

}  // namespace

Method ownMethodOf(const Class* type, Selector selector) {
    const MethodList* const methods = type->data->methods;
    if (methods == nullptr) return nullptr;
    for (std::uint32_t i = 0; i < methods->count; ++i) {
        const auto* const method = entry<MethodRecord>(methods, i);
        if (std::strcmp(method->selector, selector) == 0) return method->implementation;
    }
    return nullptr;
}

Method methodOf(const Class* type, Selector selector) {
    for (; type != nullptr; type = type->superclass) {
        if (const Method found = ownMethodOf(type, selector)) return found;
    }
    return nullptr;
}

std::uint32_t realizedSize(Class* type) {
    static std::recursive_mutex mutex;
    static std::map<const Class*, std::uint32_t>& sizes = *new std::map<const Class*, std::uint32_t>;
    const std::lock_guard lock(mutex);
    const auto known = sizes.find(type);
    if (known != sizes.end()) return known->second;
    const std::uint32_t above = type->superclass != nullptr ? realizedSize(type->superclass) : 0;
    const std::uint32_t start = type->data->instanceStart;
    const std::uint32_t moved = above > start ? (above - start + 15U) & ~15U : 0;  // every alignment stays
    if (moved > 0) moveIvars(*type->data, moved);
    return sizes[type] = type->data->instanceSize + moved;
}

bool isBlock(Object object) {
    const void* const isa = classOf(object);
    return isa == _NSConcreteStackBlock || isa == _NSConcreteMallocBlock || isa == _NSConcreteGlobalBlock;
}

bool isBlockOnStack(Object object) {
    const void* const isa = classOf(object);
    return isa == _NSConcreteStackBlock;
}

}  // namespace purlock::runtime

using namespace purlock::runtime;

// What message_send.S asks.
extern "C" {

Method runtime_method_for(Object receiver, Selector selector) {
    if (isBlock(receiver)) {
        std::fprintf(stderr, "message %s to a block\n", selector);
        std::abort();
    }
    stopIfGone(receiver, selector);
    const Method found = methodOf(classOf(receiver), selector);
    if (found == nullptr) unrecognized(classOf(receiver), selector);
    return found;
}

struct SuperReceiver {
    Object receiver;
    Class* type;
};

Method runtime_method_of_super(const SuperReceiver* receiver, Selector selector) {
    const Method found = methodOf(receiver->type->superclass, selector);
    if (found == nullptr) unrecognized(receiver->type->superclass, selector);
    return found;
}
}
