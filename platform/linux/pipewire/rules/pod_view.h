#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace purlock::host_linux {

/// A PipeWire value ("plain old data", spa/pod/pod.h) that is read without trusting any of its sizes: what
/// does not fit its surroundings is not there. Borrows the bytes. Pure; any thread.
class PodView {
  public:
    using Bytes = std::span<const std::byte>;

    /// The value at the start of `bytes`; absent when they hold no whole value. `bytes` then begins after it.
    static std::optional<PodView> take(Bytes& bytes);

    /// The value that a callback of the library hands over, which has checked that it holds what it says.
    static std::optional<PodView> fromLibrary(const void* pod);

    std::uint32_t type() const { return type_; }

    std::optional<std::uint32_t> id() const;
    std::optional<std::int32_t> integer() const;
    std::optional<std::int64_t> longInteger() const;
    std::optional<bool> boolean() const;
    std::optional<float> real() const;
    std::optional<std::string_view> text() const;
    struct Fraction {
        std::uint32_t numerator;
        std::uint32_t denominator;
    };
    std::optional<Fraction> fraction() const;

    /// The values of an array, in order; none for anything else.
    std::vector<PodView> elements() const;

    /// The values of a struct, in order; none for anything else.
    std::vector<PodView> members() const;

    struct Property;
    /// The properties of an object of this type; none for anything else.
    std::vector<Property> properties(std::uint32_t objectType) const;

    struct Choice;
    /// The alternatives of a choice; a plain value is a choice of itself.
    Choice choice() const;

  private:
    PodView(std::uint32_t type, Bytes body) : type_(type), body_(body) {}

    /// The values of one kind at the end of the body. The head that they share is at `offset`.
    std::vector<PodView> values(std::size_t offset) const;

    template <typename Value>
    std::optional<Value> read(std::size_t offset = 0) const {
        Value value;
        if (body_.size() < offset + sizeof value) return std::nullopt;
        std::memcpy(&value, body_.data() + offset, sizeof value);
        return value;
    }

    std::uint32_t type_;
    Bytes body_;
};

struct PodView::Property {
    std::uint32_t key;
    PodView value;
};

/// `kind` is one of spa_choice_type. The values of a range are the preferred one, the least and the greatest;
/// those of an enumeration are the preferred one and then all of them.
struct PodView::Choice {
    std::uint32_t kind = 0;
    std::vector<PodView> values;
};

}  // namespace purlock::host_linux
