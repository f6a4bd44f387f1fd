#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "app/user_defaults.h"

namespace purlock::test {

/// User defaults in memory; a test may put anything into `values` and see what was stored.
class MemoryUserDefaults final : public UserDefaults {
  public:
    std::optional<std::string> stringForKey(std::string_view key) const override {
        const auto found = values.find(key);
        if (found == values.end() || !std::holds_alternative<std::string>(found->second)) return std::nullopt;
        return std::get<std::string>(found->second);
    }

    std::optional<DefaultsValue> objectForKey(std::string_view key) const override {
        const auto found = values.find(key);
        return found != values.end() ? std::optional(found->second) : std::nullopt;
    }

    void setObject(std::string_view text, std::string_view key) override {
        ++changes;
        values.insert_or_assign(std::string(key), std::string(text));
    }

    void setBool(bool value, std::string_view key) override {
        ++changes;
        values.insert_or_assign(std::string(key), value);
    }

    void removeObjectForKey(std::string_view key) override {
        ++changes;
        values.erase(std::string(key));
    }

    std::map<std::string, DefaultsValue, std::less<>> values;
    int changes = 0;  // writes and removals so far
};

}  // namespace purlock::test
