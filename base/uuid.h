#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace purlock {

/// A universally unique identifier of version 4 (RFC 9562): 122 random bits.
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    /// A fresh one, from the operating system's random source. Any thread; a few tens of nanoseconds.
    static Uuid random();

    /// "123E4567-E89B-42D3-A456-426614174000": upper-case hexadecimal.
    std::string text() const;

    bool operator==(const Uuid&) const = default;
};

}  // namespace purlock
