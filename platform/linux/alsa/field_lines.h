#pragma once

#include <charconv>
#include <optional>
#include <string_view>

#include "platform/linux/system/lines.h"

namespace purlock::host_linux {

// The texts of /proc/asound are lines of a name, a separator (":" with blanks around it, or tabs) and a
// value. Pure functions; any thread; no input makes them fail.

struct FieldLine {
    std::string_view name;
    std::string_view value;
};

/// Splits at the first of `separators`; a line without one is a name without a value.
inline FieldLine splitLine(std::string_view line, std::string_view separators) {
    const auto at = line.find_first_of(separators);
    if (at == std::string_view::npos) return {withoutBlanks(line), {}};
    return {withoutBlanks(line.substr(0, at)), withoutBlanks(line.substr(at + 1))};
}

/// The decimal number at the start of `text`, which something else may follow ("96000 (96000/1)").
template <typename Number>
std::optional<Number> leadingNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{}) return std::nullopt;
    return number;
}

}  // namespace purlock::host_linux
