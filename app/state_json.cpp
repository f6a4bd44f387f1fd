#include "app/state_json.h"

#include <utility>

namespace purlock {

namespace {

JsonValue::Object formatObject(const AudioFormat& format) {
    return {{"bitsPerChannel", format.bitsPerChannel},
            {"channels", format.channelsPerFrame},
            {"label", format.formatLabel()},
            {"sampleRate", format.sampleRate}};
}

}  // namespace

JsonValue formatJson(const std::optional<AudioFormat>& format) {
    if (!format) return {};
    return formatObject(*format);
}

JsonValue formatJsonWithBitRate(const std::optional<AudioFormat>& format) {
    if (!format) return {};
    JsonValue::Object object = formatObject(*format);
    object.insert({"bitsPerSecond", format->bitsPerSecond()});
    return object;
}

std::string_view verdictName(const Verdict& verdict) {
    return std::visit(Overloaded{
                          [](const verdict::Idle&) { return "idle"; },
                          [](const verdict::BitPerfect&) { return "bitPerfect"; },
                          [](const verdict::Resampling&) { return "resampling"; },
                          [](const verdict::Unknown&) { return "unknown"; },
                      },
                      verdict);
}

std::string_view verdictHeadline(const Verdict& verdict) {
    return std::visit(Overloaded{
                          [](const verdict::Idle&) { return "Idle"; },
                          [](const verdict::BitPerfect&) { return "Bit-perfect"; },
                          [](const verdict::Resampling&) { return "Resampling"; },
                          [](const verdict::Unknown&) { return "No device"; },
                      },
                      verdict);
}

}  // namespace purlock
