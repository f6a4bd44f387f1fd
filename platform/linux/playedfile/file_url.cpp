#include "platform/linux/playedfile/file_url.h"

#include <limits.h>

#include <charconv>

namespace purlock::host_linux {

namespace {

/// Replaces each "%xy" by its byte; absent when a percent sign is followed by something else.
std::optional<std::string> percentDecoded(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty()) {
        if (text.front() != '%') {
            plain += text.front();
            text.remove_prefix(1);
            continue;
        }
        unsigned value = 0;
        const char* const digits = text.data() + 1;
        if (text.size() < 3 || std::from_chars(digits, digits + 2, value, 16).ptr != digits + 2) {
            return std::nullopt;
        }
        plain += static_cast<char>(value);
        text.remove_prefix(3);
    }
    return plain;
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

}  // namespace

std::optional<std::string> localPathOf(std::string_view url) {
    std::optional<std::string> path;
    if (takePrefix(url, "file:")) {
        if (takePrefix(url, "//")) takePrefix(url, "localhost");
        path = percentDecoded(url);
    } else {
        path = std::string(url);
    }
    const bool isUsable = path && path->starts_with('/') && !path->starts_with("//") &&
                          path->size() < PATH_MAX && path->find('\0') == std::string::npos;
    return isUsable ? path : std::nullopt;
}

}  // namespace purlock::host_linux
