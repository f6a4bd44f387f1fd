#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace purlock::host_linux {

/// A value that came over a bus, freed of D-Bus: what parsers read, and what a test writes down as a table.
///
/// Absent stands for a value that the reader did not keep: a text that is too long, a byte array, a
/// descriptor. A variant is the value inside it. Any thread.
class BusValue {
  public:
    using List = std::vector<BusValue>;                                // an array or a structure
    using Dictionary = std::vector<std::pair<std::string, BusValue>>;  // in the order of arrival

    BusValue() = default;
    explicit BusValue(bool value) : value_(value) {}
    explicit BusValue(std::int64_t value) : value_(value) {}
    explicit BusValue(double value) : value_(value) {}
    explicit BusValue(std::string value) : value_(std::move(value)) {}
    explicit BusValue(const char* value) : value_(std::string(value)) {}
    explicit BusValue(List value) : value_(std::move(value)) {}
    explicit BusValue(Dictionary value) : value_(std::move(value)) {}

    bool operator==(const BusValue&) const = default;

    // The value if it is of that type, else absent or null: a Boolean is no integer, an integer no number
    // with a fraction. Every integer type of D-Bus is an integer; an unsigned one beyond the signed range is
    // absent. Texts, object paths and signatures are texts.

    std::optional<bool> boolean() const { return get<bool>(); }
    std::optional<std::int64_t> integer() const { return get<std::int64_t>(); }
    std::optional<double> real() const { return get<double>(); }
    const std::string* text() const { return std::get_if<std::string>(&value_); }
    const List* list() const { return std::get_if<List>(&value_); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&value_); }

    /// The element of a list; null when this is no list, or a shorter one.
    const BusValue* at(std::size_t index) const;

    /// The first value under `key`; null when this is no dictionary or has no such key.
    const BusValue* find(std::string_view key) const;

  private:
    template <typename T>
    std::optional<T> get() const {
        const T* value = std::get_if<T>(&value_);
        return value != nullptr ? std::optional<T>(*value) : std::nullopt;
    }

    std::variant<std::monostate, bool, std::int64_t, double, std::string, List, Dictionary> value_;
};

}  // namespace purlock::host_linux
