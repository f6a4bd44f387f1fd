#pragma once

#include <string>
#include <utility>
#include <vector>

namespace purlock::test {

/// Every way for bytes to be no UTF-8, each with its name.
inline std::vector<std::pair<const char*, std::string>> malformedUtf8() {
    return {
        {"continuation byte alone", "\x80"},
        {"two of them", "a\xBF\xBF"},
        {"two-byte lead at the end", "a\xC3"},
        {"three-byte lead at the end", "\xE2\x82"},
        {"four-byte lead at the end", "\xF0\x9F\x93"},
        {"lead followed by ASCII", "\xE2(\xA1"},
        {"lead followed by a lead", "\xC3\xC3\xA9"},
        {"overlong slash", "\xC0\xAF"},
        {"overlong in three bytes", "\xE0\x80\xAF"},
        {"overlong in four bytes", "\xF0\x80\x80\xAF"},
        {"high surrogate", "\xED\xA0\x80"},
        {"surrogate pair", "\xED\xA0\xBD\xED\xB3\x8C"},
        {"beyond U+10FFFF", "\xF4\x90\x80\x80"},
        {"five-byte lead", "\xF8\x88\x80\x80\x80"},
        {"bytes that are never used", "\xFE\xFF"},
        {"Latin-1", "Caf\xE9 del Mar"},
        {"a zero byte", std::string("a\0b", 3)},
        {"good text around it", "\xC3\xA9\xFF\xE2\x82\xAC"},
    };
}

}  // namespace purlock::test
