// Makes the findings for what the mixer does to the samples besides converting them.

#include <cmath>
#include <string_view>
#include <utility>

#include "base/overloaded.h"
#include "base/text.h"
#include "core/cause_engine.h"

namespace purlock::CauseEngine {

namespace {

struct Texts {
    std::string_view title;
    std::string cause;
    std::string fix;
};

/// "turns mpv down to 40 %". A volume that rounds to 100 % without being it keeps one decimal.
std::string turned(const SystemWords& words, std::string_view subject, double volume) {
    const double percent = volume * 100;
    const double whole = std::round(percent);
    const double shown = whole == 100 ? std::round(percent * 10) / 10 : whole;
    const std::string number = shown == std::round(shown)
                                   ? std::to_string(static_cast<int>(shown))
                                   : joined({std::to_string(static_cast<int>(shown)), ".",
                                             std::to_string(static_cast<int>(std::round(shown * 10)) % 10)});
    return joined({words.mixer, " turns ", subject, volume < 1 ? " down to " : " up to ", number, " %."});
}

/// "A", "A and B", "A, B and C".
std::string listed(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) text += i + 1 == names.size() ? " and " : ", ";
        text += names[i];
    }
    return text;
}

std::string channelsText(std::uint32_t count) {
    return joined({std::to_string(count), count == 1 ? " channel" : " channels"});
}

Texts channelTexts(const alteration::Channels& channels, const SystemWords& words) {
    constexpr std::string_view title = "Channels are remixed";
    if (channels.from == channels.to) {
        return {title,
                joined({words.mixer, " sends channels of ", channels.application,
                        " to other channels of the device."}),
                "Link each channel of the app to the device's channel of the same place."};
    }
    return {title,
            joined({words.mixer, " remixes ", channelsText(channels.from), " of ", channels.application,
                    " to ", std::to_string(channels.to), "."}),
            channels.from == 2
                ? std::string("Choose a stereo profile for this device.")
                : joined({"Choose a profile with ", channelsText(channels.from),
                          " for this device, or play a version with ", std::to_string(channels.to), "."})};
}

Texts textsOf(const Alteration& alteration, const SystemWords& words) {
    return std::visit(
        Overloaded{
            [&](const alteration::StreamVolume& stream) -> Texts {
                return {"App volume changes the samples", turned(words, stream.application, stream.volume),
                        joined({"Set ", stream.application, " to 100 % in the volume control."})};
            },
            [&](const alteration::StreamMute& stream) -> Texts {
                return {"App is muted", joined({words.mixer, " mutes ", stream.application, "."}),
                        joined({"Unmute ", stream.application, " in the volume control."})};
            },
            [&](const alteration::Channels& channels) { return channelTexts(channels, words); },
            [&](const alteration::Filter& filter) -> Texts {
                return {"A filter is in the path",
                        joined({filter.name, " works on the sound between the app and the device."}),
                        "Choose the device itself as the output device, or switch the filter off."};
            },
            [&](const alteration::Mixed& mixed) -> Texts {
                const std::string names = listed(mixed.applications);
                const bool isOne = mixed.applications.size() == 1;
                return {"Other sound is mixed in",
                        joined({words.mixer, " mixes in what ", names, isOne ? " plays." : " play."}),
                        joined({"Stop ", names, ", or give ", isOne ? "it" : "them", " another device."})};
            },
            [&](const alteration::DeviceVolume& device) -> Texts {
                return {"Device volume changes the samples", turned(words, device.device, device.volume),
                        joined({"Set the volume of ", device.device,
                                " to 100 % and use the amplifier's own control."})};
            },
            [&](const alteration::DeviceMute& device) -> Texts {
                return {"Device is muted", joined({words.mixer, " mutes ", device.device, "."}),
                        joined({"Unmute ", device.device, "."})};
            },
            [&](const alteration::Clock& clock) -> Texts {
                return {"Another device sets the clock",
                        joined({clock.device, " follows the clock of ", clock.leader, ". ", words.mixer,
                                " resamples what it plays to keep pace."}),
                        "Play to one device at a time."};
            },
            [&](const alteration::Dither& dither) -> Texts {
                return {"Noise is added", joined({words.mixer, " dithers what ", dither.device, " plays."}),
                        joined({"Switch dithering off in the settings of ", dither.device, "."})};
            },
            [&](const alteration::Elsewhere& elsewhere) -> Texts {
                return {"Another device plays",
                        joined({elsewhere.application, " plays to ", elsewhere.device, "."}),
                        joined({"Choose System default, or move ", elsewhere.application, " to ",
                                elsewhere.watched, " in the volume control."})};
            },
        },
        alteration);
}

}  // namespace

std::vector<Diagnostic> alterationDiagnostics(const std::optional<MixerWork>& work,
                                              const SystemWords& words) {
    std::vector<Diagnostic> found;
    if (!work) return found;
    for (const Alteration& alteration : work->alterations) {
        auto [title, cause, fix] = textsOf(alteration, words);
        found.push_back({Uuid::random(), Diagnostic::Severity::medium, std::string(title), std::move(cause),
                         std::move(fix)});
    }
    return found;
}

}  // namespace purlock::CauseEngine
