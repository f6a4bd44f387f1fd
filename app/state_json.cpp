#include "app/state_json.h"

#include <utility>

#include "base/overloaded.h"

namespace purlock {

namespace {

JsonValue::Object formatObject(const AudioFormat& format) {
    return JsonValue::Object({{"bitsPerChannel", format.bitsPerChannel},
                              {"channels", format.channelsPerFrame},
                              {"label", format.formatLabel()},
                              {"sampleRate", format.sampleRate}});
}

JsonValue::Array textList(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

JsonValue::Object alterationObject(const Alteration& alteration) {
    using Object = JsonValue::Object;
    return std::visit(
        Overloaded{
            [](const alteration::StreamVolume& stream) {
                return Object({{"application", stream.application},
                               {"kind", "streamVolume"},
                               {"volume", stream.volume}});
            },
            [](const alteration::StreamMute& stream) {
                return Object({{"application", stream.application}, {"kind", "streamMute"}});
            },
            [](const alteration::Channels& channels) {
                return Object({{"application", channels.application},
                               {"from", channels.from},
                               {"kind", "channels"},
                               {"to", channels.to}});
            },
            [](const alteration::Filter& filter) {
                return Object({{"kind", "filter"}, {"name", filter.name}});
            },
            [](const alteration::Mixed& mixed) {
                return Object({{"applications", textList(mixed.applications)}, {"kind", "mixed"}});
            },
            [](const alteration::DeviceVolume& device) {
                return Object(
                    {{"device", device.device}, {"kind", "deviceVolume"}, {"volume", device.volume}});
            },
            [](const alteration::DeviceMute& device) {
                return Object({{"device", device.device}, {"kind", "deviceMute"}});
            },
            [](const alteration::Clock& clock) {
                return Object({{"device", clock.device}, {"kind", "clock"}, {"leader", clock.leader}});
            },
            [](const alteration::Dither& dither) {
                return Object({{"device", dither.device}, {"kind", "dither"}});
            },
            [](const alteration::Elsewhere& elsewhere) {
                return Object({{"application", elsewhere.application},
                               {"device", elsewhere.device},
                               {"kind", "elsewhere"}});
            },
        },
        alteration);
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
                          [](const verdict::Altered&) { return "altered"; },
                      },
                      verdict);
}

JsonValue alterationsJson(const MixerWork& work) {
    JsonValue::Array list;
    for (const Alteration& alteration : work.alterations) list.emplace_back(alterationObject(alteration));
    return list;
}

}  // namespace purlock
