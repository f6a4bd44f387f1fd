#include "platform/linux/pipewire/mixer_pod.h"

#include <spa/param/port-config.h>
#include <spa/param/props.h>
#include <spa/utils/type.h>

#include <string_view>

#include "platform/linux/pipewire/sound_format.h"

namespace purlock::host_linux {

namespace {

constexpr std::size_t mostChannels = 1024;

std::vector<float> factors(const PodView& array) {
    std::vector<float> found;
    for (const PodView& element : array.elements()) {
        if (found.size() == mostChannels) break;
        found.push_back(element.real().value_or(1));
    }
    return found;
}

/// The settings of the converter: a struct of names and values in turn.
bool asksForDither(const PodView& settings) {
    const auto members = settings.members();
    bool found = false;
    for (std::size_t i = 0; i + 1 < members.size(); i += 2) {
        const auto name = members[i].text();
        const PodView& value = members[i + 1];
        if (name == "dither.noise") found = found || value.integer().value_or(0) > 0;
        if (name == "dither.method") found = found || value.text().value_or("none") != "none";
    }
    return found;
}

void take(MixerProperties& mixing, const PodView::Property& property) {
    switch (property.key) {
        case SPA_PROP_volume:
            mixing.volume = property.value.real().value_or(1);
            break;
        case SPA_PROP_mute:
            mixing.isMuted = property.value.boolean().value_or(false);
            break;
        case SPA_PROP_softMute:
            mixing.isSoftMuted = property.value.boolean().value_or(false);
            break;
        case SPA_PROP_channelVolumes:
            mixing.channelVolumes = factors(property.value);
            break;
        case SPA_PROP_softVolumes:
            mixing.softVolumes = factors(property.value);
            break;
        case SPA_PROP_params:
            mixing.dithers = asksForDither(property.value);
            break;
        default:
            break;
    }
}

}  // namespace

MixerProperties mixerPropertiesFromPods(const std::vector<PodView>& values) {
    MixerProperties mixing;
    if (values.empty()) return mixing;
    for (const PodView::Property& property : values.front().properties(SPA_TYPE_OBJECT_Props))
        take(mixing, property);
    mixing.hasControls = values.size() > 1;
    return mixing;
}

std::vector<std::uint32_t> portPositionsFromPods(const std::vector<PodView>& values) {
    for (const PodView& value : values) {
        for (const PodView::Property& property : value.properties(SPA_TYPE_OBJECT_ParamPortConfig)) {
            if (property.key == SPA_PARAM_PORT_CONFIG_format) return positionsFromPod(property.value);
        }
    }
    return {};
}

}  // namespace purlock::host_linux
