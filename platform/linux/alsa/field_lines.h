#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace purlock::host_linux {

// The texts of /proc/asound are lines of a name, a separator (":" with blanks around it, or tabs) and a
// value. Pure functions; any thread; no input makes them fail.

/// Takes the first line off `text`, without its line feed.
inline std::string_view takeLine(std::string_view& text) {
    const auto end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

/// `text` without blanks, tabs and carriage returns at its ends.
inline std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

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
