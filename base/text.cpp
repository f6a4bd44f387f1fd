#include "base/text.h"

#include <algorithm>
#include <cstddef>

#include "base/case_tables.h"

namespace purlock {

namespace {

constexpr DecodedCodePoint malformed(std::size_t length) {
    return {0, length, false};
}

/// What the first byte of a sequence promises: its length, its own bits, and the range of the second byte,
/// which is where overlong forms, surrogates and values beyond U+10FFFF are kept out (Unicode, table 3-7).
struct Lead {
    std::size_t length;
    char32_t bits;
    unsigned char secondMinimum;
    unsigned char secondMaximum;
};

constexpr Lead leadOf(unsigned char byte) {
    const auto bits = static_cast<char32_t>(byte);
    if (byte >= 0xC2 && byte <= 0xDF) return {2, bits & 0x1F, 0x80, 0xBF};
    if (byte == 0xE0) return {3, bits & 0x0F, 0xA0, 0xBF};
    if (byte == 0xED) return {3, bits & 0x0F, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return {3, bits & 0x0F, 0x80, 0xBF};
    if (byte == 0xF0) return {4, bits & 0x07, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3) return {4, bits & 0x07, 0x80, 0xBF};
    if (byte == 0xF4) return {4, bits & 0x07, 0x80, 0x8F};
    return {0, 0, 0, 0};
}

/// Appends the other case of `codePoint`; itself where there is none.
void appendMapped(std::string& out, char32_t codePoint, const CaseTable& table) {
    const auto expansion = std::ranges::lower_bound(table.expansions, codePoint, {}, &CaseExpansion::from);
    if (expansion != table.expansions.end() && expansion->from == codePoint) {
        for (const char32_t part : expansion->to) {
            if (part != 0) appendCodePoint(out, part);
        }
        return;
    }
    const auto range = std::ranges::lower_bound(table.ranges, codePoint, {}, &CaseRange::last);
    if (range != table.ranges.end() && codePoint >= range->first &&
        (codePoint - range->first) % range->step == 0) {
        appendCodePoint(out, static_cast<char32_t>(static_cast<std::int32_t>(codePoint) + range->distance));
        return;
    }
    appendCodePoint(out, codePoint);
}

std::string mapped(std::string_view text, const CaseTable& table, char firstAscii, char lastAscii) {
    constexpr char asciiCaseBit = 0x20;
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const char byte = text.front();
        std::size_t length = 1;
        if (static_cast<unsigned char>(byte) < 0x80) {
            out += byte >= firstAscii && byte <= lastAscii ? static_cast<char>(byte ^ asciiCaseBit) : byte;
        } else {
            const DecodedCodePoint decoded = decodeFirst(text);
            length = decoded.length;
            if (decoded.valid) {
                appendMapped(out, decoded.codePoint, table);
            } else {
                out += text.substr(0, length);
            }
        }
        text.remove_prefix(length);
    }
    return out;
}

constexpr bool isWhiteSpaceOrLineBreak(char32_t c) {
    return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200B) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
           c == 0x3000;
}

/// The length of the last code point of `text`, which is not empty; of malformed bytes, one.
std::size_t lastLength(std::string_view text) {
    for (std::size_t length = 1; length <= std::min<std::size_t>(4, text.size()); ++length) {
        const DecodedCodePoint decoded = decodeFirst(text.substr(text.size() - length));
        if (decoded.valid && decoded.length == length) return length;
    }
    return 1;
}

}  // namespace

DecodedCodePoint decodeFirst(std::string_view text) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (byteAt(0) < 0x80) return {byteAt(0), 1, true};
    const Lead lead = leadOf(byteAt(0));
    if (lead.length == 0) return malformed(1);
    char32_t codePoint = lead.bits;
    for (std::size_t i = 1; i < lead.length; ++i) {
        const unsigned char minimum = i == 1 ? lead.secondMinimum : 0x80;
        const unsigned char maximum = i == 1 ? lead.secondMaximum : 0xBF;
        if (i >= text.size() || byteAt(i) < minimum || byteAt(i) > maximum) return malformed(i);
        codePoint = codePoint << 6 | (byteAt(i) & 0x3F);
    }
    return {codePoint, lead.length, true};
}

void appendCodePoint(std::string& text, char32_t codePoint) {
    const auto append = [&](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0 | codePoint >> 6);
        append(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        append(0xE0 | codePoint >> 12);
        append(0x80 | (codePoint >> 6 & 0x3F));
        append(0x80 | (codePoint & 0x3F));
    } else {
        append(0xF0 | codePoint >> 18);
        append(0x80 | (codePoint >> 12 & 0x3F));
        append(0x80 | (codePoint >> 6 & 0x3F));
        append(0x80 | (codePoint & 0x3F));
    }
}

std::string lowercased(std::string_view text) {
    return mapped(text, lowerCaseTable, 'A', 'Z');
}

std::string uppercased(std::string_view text) {
    return mapped(text, upperCaseTable, 'a', 'z');
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty()) {
        const DecodedCodePoint first = decodeFirst(text);
        if (!first.valid || !isWhiteSpaceOrLineBreak(first.codePoint)) break;
        text.remove_prefix(first.length);
    }
    while (!text.empty()) {
        const std::size_t length = lastLength(text);
        const DecodedCodePoint last = decodeFirst(text.substr(text.size() - length));
        if (!last.valid || !isWhiteSpaceOrLineBreak(last.codePoint)) break;
        text.remove_suffix(length);
    }
    return text;
}

std::string wellFormed(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const DecodedCodePoint decoded = decodeFirst(text);
        out += decoded.valid ? text.substr(0, decoded.length) : replacement;
        text.remove_prefix(decoded.length);
    }
    return out;
}

std::string_view firstCharacters(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes) return text;
    constexpr std::size_t mostContinuations = 3;
    std::size_t end = bytes;
    while (end > 0 && bytes - end < mostContinuations &&
           (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    // Bytes that are no UTF-8 may go on for longer.
    const bool isCharacter = (static_cast<unsigned char>(text[end]) & 0xC0U) != 0x80U;
    return text.substr(0, isCharacter ? end : bytes);
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::size_t size = 0;
    for (const std::string_view part : parts) size += part.size();
    std::string text;
    text.reserve(size);
    for (const std::string_view part : parts) text += part;
    return text;
}

}  // namespace purlock
