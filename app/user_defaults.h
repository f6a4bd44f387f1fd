#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace purlock {

/// A stored value of a type that this program does not use.
struct OtherDefaultsValue {
    bool operator==(const OtherDefaultsValue&) const = default;
};

using DefaultsValue = std::variant<std::string, bool, OtherDefaultsValue>;

/// The user's persistent settings: keys and typed values. Owned by the host; main thread only.
///
/// Each change is stored before the call returns. A store that cannot be written keeps the value for this
/// run.
class UserDefaults {
  public:
    UserDefaults() = default;
    virtual ~UserDefaults() = default;
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    /// The stored text; absent when the key is missing or holds another type.
    virtual std::optional<std::string> stringForKey(std::string_view key) const = 0;

    /// Whatever is stored under the key; a number is no boolean.
    virtual std::optional<DefaultsValue> objectForKey(std::string_view key) const = 0;

    virtual void setObject(std::string_view text, std::string_view key) = 0;
    virtual void setBool(bool value, std::string_view key) = 0;
    virtual void removeObjectForKey(std::string_view key) = 0;
};

}  // namespace purlock
