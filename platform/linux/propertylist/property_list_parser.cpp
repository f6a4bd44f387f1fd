#include "platform/linux/propertylist/property_list_parser.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "base/text.h"
#include "platform/linux/propertylist/property_list_check.h"

namespace purlock::host_linux {

namespace {

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using OwnedPlist = std::unique_ptr<void, PlistDeleter>;

struct MallocDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Malloced = std::unique_ptr<T, MallocDeleter>;

OwnedPlist parse(const std::string& data) {
    plist_t root = nullptr;
    const auto length = static_cast<std::uint32_t>(data.size());
    if (data.starts_with("bplist")) {
        if (isSafeBinaryPropertyList(data)) plist_from_bin(data.data(), length, &root);
    } else {
        if (isSafeXmlPropertyList(data)) plist_from_xml(data.data(), length, &root);
    }
    return OwnedPlist(root);
}

PropertyListValue textOf(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    if (text == nullptr) return OtherPropertyListType{};
    return wellFormed({text, static_cast<std::size_t>(length)});
}

PropertyListValue integerOf(plist_t node) {
    std::uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return static_cast<std::int64_t>(value);
}

PropertyListValue booleanOf(plist_t node) {
    std::uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
}

PropertyListValue valueOf(plist_t node) {
    const plist_type type = plist_get_node_type(node);
    if (type == PLIST_STRING) return textOf(node);
    if (type == PLIST_UINT) return integerOf(node);
    if (type == PLIST_BOOLEAN) return booleanOf(node);
    return OtherPropertyListType{};
}

PropertyListDictionary dictionaryOf(plist_t root) {
    PropertyListDictionary dictionary;
    plist_dict_iter rawIterator = nullptr;
    plist_dict_new_iter(root, &rawIterator);
    const Malloced<void> iterator(rawIterator);
    for (;;) {
        char* rawKey = nullptr;
        plist_t node = nullptr;
        plist_dict_next_item(root, iterator.get(), &rawKey, &node);
        const Malloced<char> key(rawKey);
        if (node == nullptr) return dictionary;
        if (key) dictionary.insert_or_assign(wellFormed(key.get()), valueOf(node));
    }
}

}  // namespace

std::optional<PropertyListDictionary> parsePropertyList(const std::string& data) {
    const OwnedPlist root = parse(data);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT) return std::nullopt;
    return dictionaryOf(root.get());
}

}  // namespace purlock::host_linux
