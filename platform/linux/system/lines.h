#pragma once

#include <string_view>

namespace purlock::host_linux {

// Texts of the system are lines of names and values. Pure functions; any thread; no input makes them fail.

/// Takes the first line off `text`, without its line feed and a carriage return before that.
inline std::string_view takeLine(std::string_view& text) {
    const auto end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

/// `text` without blanks, tabs and carriage returns at its ends.
inline std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace purlock::host_linux
