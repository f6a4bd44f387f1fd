#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace purlock {

/// Code points `first`, `first + step`, ... `last`, each `distance` away from its other case.
struct CaseRange {
    char32_t first;
    char32_t last;
    std::uint8_t step;
    std::int32_t distance;
};

/// A code point whose other case is more than one code point; unused places are 0.
struct CaseExpansion {
    char32_t from;
    std::array<char32_t, 3> to;
};

/// Both kinds of rows sorted by code point; ASCII is left to the reader.
struct CaseTable {
    std::span<const CaseRange> ranges;
    std::span<const CaseExpansion> expansions;
};

extern const CaseTable lowerCaseTable;
extern const CaseTable upperCaseTable;

}  // namespace purlock
