#include "platform/linux/applications/process_identity.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t maximumIdentifierBytes = 255;  // of a file's name

std::optional<std::string> checkedIdentifier(std::string text) {
    const auto isOdd = [](char byte) {
        return static_cast<unsigned char>(byte) <= ' ' || byte == '/' || byte == '\x7F';
    };
    const bool usable = !text.empty() && text.size() <= maximumIdentifierBytes &&
                        std::ranges::none_of(text, isOdd) && wellFormed(text) == text;
    return usable ? std::optional(std::move(text)) : std::nullopt;
}

std::string_view takeUntil(std::string_view& text, char separator) {
    const std::size_t end = text.find(separator);
    const std::string_view part = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    return part;
}

/// Takes "\x2d" and the like back (systemd-escape(1)); anything else stays as it is.
std::string withoutUnitEscapes(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        unsigned value = 0;
        const char* const digits = text.data() + 2;
        if (text.size() >= 4 && text.starts_with("\\x") &&
            std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2) {
            plain += static_cast<char>(value);
            text.remove_prefix(4);
        } else {
            plain += text.front();
            text.remove_prefix(1);
        }
    }
    return plain;
}

/// Takes `suffix` off the end of `text`, if it is there.
bool takeSuffix(std::string_view& text, std::string_view suffix) {
    if (!text.ends_with(suffix)) return false;
    text.remove_suffix(suffix.size());
    return true;
}

/// The part after the last '-', if there is one. The dashes of an identifier itself are escaped.
std::string_view afterLastDash(std::string_view text) {
    return text.substr(text.find_last_of('-') + 1);
}

std::optional<std::string> applicationOfSnap(std::string_view unit) {
    unit.remove_prefix(std::string_view("snap.").size());
    const std::string_view snap = takeUntil(unit, '.');
    // After the application comes "-<random>", of old ".<random>"; the name itself may hold dashes.
    const std::size_t dot = unit.find('.');
    constexpr std::size_t uuidLength = 36;
    std::string_view application = unit.substr(0, dot);
    if (dot == std::string_view::npos && application.size() > uuidLength &&
        application[application.size() - uuidLength - 1] == '-') {
        application.remove_suffix(uuidLength + 1);
    }
    if (snap.empty() || application.empty()) return std::nullopt;
    return checkedIdentifier(joined({snap, "_", application}));
}

std::optional<std::string> applicationOfUnit(std::string_view unit) {
    const bool isScope = takeSuffix(unit, ".scope");
    if (!isScope && !takeSuffix(unit, ".service")) return std::nullopt;
    if (isScope && unit.starts_with("snap.")) return applicationOfSnap(unit);
    if (!unit.starts_with("app-")) return std::nullopt;
    unit.remove_prefix(std::string_view("app-").size());
    if (isScope) {
        const std::size_t random = unit.find_last_of('-');
        if (random == std::string_view::npos) return std::nullopt;
        unit = unit.substr(0, random);
    } else {
        unit = unit.substr(0, unit.find('@'));
    }
    return checkedIdentifier(withoutUnitEscapes(afterLastDash(unit)));
}

template <typename T>
bool takeNumber(std::string_view& fields, T& number) {
    const std::string_view field = takeUntil(fields, ' ');
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
    return error == std::errc() && end == field.data() + field.size();
}

}  // namespace

std::optional<std::string> applicationOfFlatpakInfo(std::string_view text) {
    bool inGroup = false;
    while (!text.empty()) {
        const std::string_view line = takeUntil(text, '\n');
        if (line.starts_with('[')) inGroup = line == "[Application]";
        if (inGroup && line.starts_with("name=")) return checkedIdentifier(std::string(line.substr(5)));
    }
    return std::nullopt;
}

std::optional<std::string> applicationOfControlGroup(std::string_view text) {
    while (!text.empty()) {
        std::string_view line = takeUntil(text, '\n');
        takeUntil(line, ':');
        const std::string_view controllers = takeUntil(line, ':');
        // The unified hierarchy, or systemd's own where both kinds are mounted.
        if (!controllers.empty() && controllers != "name=systemd") continue;
        if (auto application = applicationOfUnit(line.substr(line.find_last_of('/') + 1))) return application;
    }
    return std::nullopt;
}

std::optional<ProcessStatus> parseProcessStatus(std::string_view text) {
    const std::size_t nameEnd =
        text.rfind(')');  // the name in front may hold anything, blanks and brackets too
    if (nameEnd == std::string_view::npos || nameEnd + 2 > text.size()) return std::nullopt;
    std::string_view fields = text.substr(nameEnd + 2);
    ProcessStatus status;
    takeUntil(fields, ' ');  // state
    std::int32_t group = 0;
    if (!takeNumber(fields, status.parent) || !takeNumber(fields, group) ||
        !takeNumber(fields, status.session)) {
        return std::nullopt;
    }
    constexpr int fieldsBeforeStartTime = 15;  // fields 7 to 21
    for (int i = 0; i < fieldsBeforeStartTime; ++i) takeUntil(fields, ' ');
    if (!takeNumber(fields, status.startTime)) return std::nullopt;
    return status;
}

}  // namespace purlock::host_linux
