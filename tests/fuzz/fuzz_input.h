#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace purlock::fuzz {

/// What a fuzz target is given, as a text.
inline std::string text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// A promise of the parser; the search ends where it is broken.
inline void promise(bool kept) {
    if (!kept) std::abort();
}

}  // namespace purlock::fuzz
