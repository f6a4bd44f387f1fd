#pragma once

#include <cstdint>

namespace purlock {

/// The 32-bit value whose bytes, most significant first, are the four characters of `text`: "dOut" is
/// 0x644F7574.
consteval std::uint32_t fourCharCode(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

}  // namespace purlock
