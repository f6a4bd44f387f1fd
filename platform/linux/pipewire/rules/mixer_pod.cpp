#include "platform/linux/pipewire/rules/mixer_pod.h"

#include <spa/param/port-config.h>
#include <spa/param/props.h>
#include <spa/utils/type.h>

#include <string_view>

#include "platform/linux/pipewire/rules/sound_format.h"

namespace purlock::host_linux {

namespace {

std::vector<float> factors(const PodView& array) {
    std::vector<float> found;
    for (const PodView& element : array.elements()) {
        if (found.size() == mostChannels) break;
        found.push_back(element.real().value_or(1));
    }
    return found;
}

/// The settings of the converter: a struct of names and values in turn.
void takeSettings(MixerProperties& mixing, const PodView& settings) {
    const auto members = settings.members();
    for (std::size_t i = 0; i + 1 < members.size(); i += 2) {
        const auto name = members[i].text();
        const PodView& value = members[i + 1];
        if (name == "dither.noise" && value.integer().value_or(0) > 0) mixing.dithers = true;
        if (name == "dither.method" && value.text().value_or("none") != "none") mixing.dithers = true;
        if (name == "monitor.channel-volumes") mixing.reachesMonitor = value.boolean().value_or(false);
    }
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
            takeSettings(mixing, property.value);
            break;
        default:
            break;
    }
}

}  // namespace

MixerProperties mixerPropertiesFromPods(const std::vector<PodView>& values) {
    MixerProperties mixing;
    if (values.empty()) return mixing;
    for (const PodView::Property& property : values.front().properties(SPA_TYPE_OBJECT_Props)) {
        take(mixing, property);
    }
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
