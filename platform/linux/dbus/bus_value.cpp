#include "platform/linux/dbus/bus_value.h"

#include <algorithm>

namespace purlock::host_linux {

const BusValue* BusValue::at(std::size_t index) const {
    const List* values = list();
    return values != nullptr && index < values->size() ? &(*values)[index] : nullptr;
}

const BusValue* BusValue::find(std::string_view key) const {
    const Dictionary* entries = dictionary();
    if (entries == nullptr) return nullptr;
    const auto entry = std::ranges::find(*entries, key, &Dictionary::value_type::first);
    return entry != entries->end() ? &entry->second : nullptr;
}

}  // namespace purlock::host_linux
