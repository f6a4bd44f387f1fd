#include "core/system_words.h"

#include <algorithm>
#include <optional>

namespace purlock {

namespace {

struct Entry {
    const char* name;
    std::string SystemWords::*text;
};

struct Reason {
    const char* name;
    ReasonWords SystemWords::*words;
};

constexpr Entry entries[] = {
    {"mixer", &SystemWords::mixer},
    {"resamplingTitle", &SystemWords::resamplingTitle},
    {"resamplingCause", &SystemWords::resamplingCause},
    {"resamplingFix", &SystemWords::resamplingFix},
    {"resamplingTwiceCause", &SystemWords::resamplingTwiceCause},
    {"depthCause", &SystemWords::depthCause},
    {"depthFix", &SystemWords::depthFix},
    {"builtInLink", &SystemWords::builtInLink},
    {"builtInTitle", &SystemWords::builtInTitle},
    {"builtInCause", &SystemWords::builtInCause},
    {"builtInFix", &SystemWords::builtInFix},
    {"airPlayCause", &SystemWords::airPlayCause},
    {"bluetoothLink", &SystemWords::bluetoothLink},
    {"bluetoothBitrate", &SystemWords::bluetoothBitrate},
    {"bluetoothCodecLink", &SystemWords::bluetoothCodecLink},
    {"bluetoothCause", &SystemWords::bluetoothCause},
    {"bluetoothCodecCause", &SystemWords::bluetoothCodecCause},
    {"bluetoothFix", &SystemWords::bluetoothFix},
    {"unnamedApp", &SystemWords::unnamedApp},
    {"convertingDetail", &SystemWords::convertingDetail},
    {"unseenDetail", &SystemWords::unseenDetail},
    {"bannerReason", &SystemWords::bannerReason},
};

constexpr Reason reasons[] = {
    {"deviceCannot", &SystemWords::deviceCannot},
    {"deviceIsSet", &SystemWords::deviceIsSet},
    {"rateNotAllowed", &SystemWords::rateNotAllowed},
    {"rateForced", &SystemWords::rateForced},
    {"rateForcedByStream", &SystemWords::rateForcedByStream},
    {"heldByStream", &SystemWords::heldByStream},
};

// An entry that is added to the table and forgotten here would be compared by nobody.
constexpr std::size_t flags = 1;
static_assert(sizeof(SystemWords) == std::size(entries) * sizeof(std::string) +
                                         std::size(reasons) * sizeof(ReasonWords) +
                                         flags * alignof(std::string));

std::optional<std::string_view> fillingFor(std::string_view name, const std::vector<Filling>& fillings) {
    const auto found = std::ranges::find(fillings, name, &Filling::first);
    return found == fillings.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

std::string fill(std::string_view text, const std::vector<Filling>& fillings) {
    std::string filled;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t open = std::min(text.find('{', at), text.size());
        filled += text.substr(at, open - at);
        const std::size_t close = text.find('}', open);
        if (close == std::string_view::npos) return filled.append(text.substr(open));
        const auto filling = fillingFor(text.substr(open + 1, close - open - 1), fillings);
        filled += filling ? *filling : text.substr(open, 1);
        at = filling ? close + 1 : open + 1;
    }
    return filled;
}

void forEachEntry(const SystemWords& words,
                  const std::function<void(const std::string& name, const std::string& text)>& visitor) {
    for (const Entry& entry : entries) visitor(entry.name, words.*entry.text);
    for (const Reason& reason : reasons) {
        const ReasonWords& each = words.*reason.words;
        visitor(std::string(reason.name) + ".cause", each.cause);
        visitor(std::string(reason.name) + ".fix", each.fix);
        visitor(std::string(reason.name) + ".command", each.command);
    }
}

}  // namespace purlock
