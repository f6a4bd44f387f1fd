#pragma once

#include <cstdint>

namespace purlock::runtime {

// The records that clang emits for classes (the modern ABI of macOS), as far as they are read here. Selectors
// are compared by their text, so that nothing needs to be registered.

using Selector = const char*;
using Object = void*;
using Method = void (*)();

struct MethodRecord {
    Selector selector;
    const char* types;
    Method implementation;
};

struct MethodList {
    std::uint32_t entrySize;  // with flags in the lowest two bits
    std::uint32_t count;
    MethodRecord first;
};

struct IvarRecord {
    std::int64_t* offset;  // a variable that the code reads
    const char* name;
    const char* type;
    std::uint32_t alignment;
    std::uint32_t size;
};

struct IvarList {
    std::uint32_t entrySize;
    std::uint32_t count;
    IvarRecord first;
};

struct ClassData {
    std::uint32_t flags;
    std::uint32_t instanceStart;  // where the class's own variables begin, as the compiler thought
    std::uint32_t instanceSize;
    std::uint32_t reserved;
    const std::uint8_t* strongLayout;
    const char* name;
    const MethodList* methods;
    const void* protocols;
    const IvarList* ivars;
    const std::uint8_t* weakLayout;
    const void* properties;

    static constexpr std::uint32_t isMetaclass = 1;
};

struct Class {
    Class* isa;
    Class* superclass;
    void* cache;
    void* table;
    const ClassData* data;
};

inline Class* classOf(Object object) {
    return *static_cast<Class**>(object);
}

inline bool isClass(Object object) {
    return (classOf(object)->data->flags & ClassData::isMetaclass) != 0;
}

/// The method that objects of this class, or of one above it, have for the selector; null when there is none.
Method methodOf(const Class* type, Selector selector);
/// The same without those above.
Method ownMethodOf(const Class* type, Selector selector);

/// The size of the class's objects. A compiler that did not see the variables of the classes above has placed
/// those of this class too low; before the first object is made they are moved.
std::uint32_t realizedSize(Class* type);

/// True if the object is a block, which has no class record.
bool isBlock(Object object);
bool isBlockOnStack(Object object);

}  // namespace purlock::runtime
