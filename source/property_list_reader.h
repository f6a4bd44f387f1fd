#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace purlock {

/// A value of a property list that is no text, integer or Boolean: a real number, a date, data, an array, a
/// dictionary.
struct OtherPropertyListType {
    bool operator==(const OtherPropertyListType&) const = default;
};

/// A Boolean is no integer. Texts are UTF-8. An integer beyond the signed 64-bit range comes as one below
/// zero.
using PropertyListValue = std::variant<OtherPropertyListType, std::string, std::int64_t, bool>;
using PropertyListDictionary = std::map<std::string, PropertyListValue, std::less<>>;

/// Reads property-list files, binary and XML. Owned by the host; any thread; read afresh at each call.
class PropertyListReader {
  public:
    PropertyListReader() = default;
    virtual ~PropertyListReader() = default;
    PropertyListReader(const PropertyListReader&) = delete;
    PropertyListReader& operator=(const PropertyListReader&) = delete;

    /// The dictionary at the root of the file; absent when the file is missing, unreadable, malformed or has
    /// another root. Never more work than a file of a few megabytes is worth: a larger one is unreadable.
    virtual std::optional<PropertyListDictionary> dictionaryWithContentsOfFile(const std::string& path) = 0;
};

}  // namespace purlock
