#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace purlock {

/// A JSON value to be written.
class JsonValue {
  public:
    using Array = std::vector<JsonValue>;

    /// Keeps its members sorted by key, in byte order. Keys are those of the program's own records; one that
    /// is given twice ends the process.
    class Object {
      public:
        using Member = std::pair<std::string, JsonValue>;

        Object() = default;

        /// Takes the values out of the list.
        template <std::size_t count>
        explicit Object(Member (&&members)[count]) {
            members_.reserve(count);
            for (auto& member : members) insert(std::move(member));
        }

        void insert(Member member);

        const std::vector<Member>& members() const { return members_; }

      private:
        std::vector<Member> members_;
    };

    JsonValue() = default;                                             // null
    JsonValue(bool value) : value_(value) {}                           // NOLINT(google-explicit-constructor)
    JsonValue(std::int64_t value) : value_(value) {}                   // NOLINT(google-explicit-constructor)
    JsonValue(std::uint32_t value) : value_(std::int64_t{value}) {}    // NOLINT(google-explicit-constructor)
    JsonValue(double value) : value_(value) {}                         // NOLINT(google-explicit-constructor)
    JsonValue(std::string value) : value_(std::move(value)) {}         // NOLINT(google-explicit-constructor)
    JsonValue(std::string_view value) : value_(std::string(value)) {}  // NOLINT(google-explicit-constructor)
    JsonValue(const char* value) : value_(std::string(value)) {}       // NOLINT(google-explicit-constructor)
    JsonValue(Array value) : value_(std::move(value)) {}               // NOLINT(google-explicit-constructor)
    JsonValue(Object value) : value_(std::move(value)) {}              // NOLINT(google-explicit-constructor)

    using Storage = std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Object>;
    const Storage& storage() const { return value_; }

  private:
    Storage value_;
};

enum class JsonLayout { compact, pretty };

/// `value` as JSON text in UTF-8, without a final line feed; absent when it holds a number that is not
/// finite, which JSON cannot say. Malformed UTF-8 becomes U+FFFD.
///
/// The form is that of Foundation's JSON writer with sorted keys, byte for byte: two blanks a level and " : "
/// in the pretty layout, a blank line in an empty pretty container, "\/" for a slash, "\u001f" with
/// lower-case digits for controls, everything else as it is, and doubles as "%.17g" prints them (44100.0 is
/// 44100).
std::optional<std::string> jsonText(const JsonValue& value, JsonLayout layout);

}  // namespace purlock
