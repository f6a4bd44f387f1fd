#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace purlock {

// Texts are UTF-8. Bytes that are no UTF-8 are carried through unchanged by every function here, except by
// `wellFormed`. Pure functions; any thread.

/// Every letter in lower case by Unicode's full mapping, whatever the locale. A capital sigma becomes the
/// middle form also at the end of a word, so that a text is still contained in a longer one.
std::string lowercased(std::string_view text);

/// Every letter in upper case by Unicode's full mapping (a sharp s becomes "SS"), whatever the locale.
std::string uppercased(std::string_view text);

/// True if `part` stands in `text`, code point by code point; an empty part stands in every text.
bool contains(std::string_view text, std::string_view part);

/// `text` without leading and trailing white space and line breaks: Unicode's separators (Z*), tab to
/// carriage return, next line, and the zero-width space.
std::string_view trimmed(std::string_view text);

/// `text` with each malformed sequence replaced by U+FFFD, as Unicode recommends: one for each maximal
/// subpart.
std::string wellFormed(std::string_view text);

/// The first characters of `text`, as many as have room in `bytes`; none is cut in two.
std::string_view firstCharacters(std::string_view text, std::size_t bytes);

/// True if there is a text that is not empty.
inline bool hasText(const std::optional<std::string>& text) {
    return text && !text->empty();
}

/// All parts in one text, made in one allocation.
std::string joined(std::initializer_list<std::string_view> parts);

/// One step of reading UTF-8: the code point at the start of `text` (which is not empty) and its length in
/// bytes.
struct DecodedCodePoint {
    char32_t codePoint;  // meaningless when not valid
    std::size_t length;  // at least 1; of a malformed sequence, its maximal subpart
    bool valid;
};
DecodedCodePoint decodeFirst(std::string_view text);

/// Appends one code point, which is below 0x110000 and no surrogate.
void appendCodePoint(std::string& text, char32_t codePoint);

}  // namespace purlock
