#include "platform/linux/pipewire/rules/mixer_pod.h"

#include <gtest/gtest.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/port-config.h>
#include <spa/param/props.h>
#include <spa/pod/builder.h>

#include <array>

namespace purlock::host_linux {
namespace {

/// Pods that the library builds.
class MixerPod : public testing::Test {
  protected:
    MixerPod() { spa_pod_builder_init(&builder_, bytes_.data(), 4096); }

    spa_pod_builder* builder() { return &builder_; }
    static PodView view(const void* pod) { return *PodView::fromLibrary(pod); }

    void addSettings(const char* method, int noise) {
        spa_pod_frame frame{};
        spa_pod_builder_prop(builder(), SPA_PROP_params, 0);
        spa_pod_builder_push_struct(builder(), &frame);
        spa_pod_builder_string(builder(), "monitor.channel-volumes");
        spa_pod_builder_bool(builder(), noise == 0);
        spa_pod_builder_string(builder(), "dither.noise");
        spa_pod_builder_int(builder(), noise);
        spa_pod_builder_string(builder(), "dither.method");
        spa_pod_builder_string(builder(), method);
        spa_pod_builder_pop(builder(), &frame);
    }

    const void* properties(float volume, bool isMuted, std::array<float, 2> channels, const char* method,
                           int noise) {
        spa_pod_frame frame{};
        spa_pod_builder_push_object(builder(), &frame, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props);
        spa_pod_builder_prop(builder(), SPA_PROP_volume, 0);
        spa_pod_builder_float(builder(), volume);
        spa_pod_builder_prop(builder(), SPA_PROP_mute, 0);
        spa_pod_builder_bool(builder(), isMuted);
        spa_pod_builder_prop(builder(), SPA_PROP_softMute, 0);
        spa_pod_builder_bool(builder(), !isMuted);
        for (const std::uint32_t key : {SPA_PROP_channelVolumes, SPA_PROP_softVolumes}) {
            spa_pod_builder_prop(builder(), key, 0);
            spa_pod_builder_array(builder(), sizeof(float), SPA_TYPE_Float, 2, channels.data());
            channels[0] *= 2;
        }
        addSettings(method, noise);
        return spa_pod_builder_pop(builder(), &frame);
    }

  private:
    std::array<std::uint8_t, 4096> bytes_{};
    spa_pod_builder builder_{};
};

TEST_F(MixerPod, VolumesAndMutes) {
    const MixerProperties mixing =
        mixerPropertiesFromPods({view(properties(0.5F, true, {0.25F, 1}, "none", 0))});
    EXPECT_EQ(mixing.volume, 0.5);
    EXPECT_TRUE(mixing.isMuted);
    EXPECT_FALSE(mixing.isSoftMuted);
    EXPECT_EQ(mixing.channelVolumes, (std::vector{0.25F, 1.0F}));
    EXPECT_EQ(mixing.softVolumes, (std::vector{0.5F, 1.0F}));
    EXPECT_FALSE(mixing.dithers);
    EXPECT_TRUE(mixing.reachesMonitor);
    EXPECT_FALSE(mixing.hasControls);
}

TEST_F(MixerPod, DitherIsNoiseOrAMethod) {
    EXPECT_TRUE(mixerPropertiesFromPods({view(properties(1, false, {1, 1}, "none", 2))}).dithers);
    EXPECT_TRUE(mixerPropertiesFromPods({view(properties(1, false, {1, 1}, "triangular", 0))}).dithers);
}

TEST_F(MixerPod, ASecondListIsThatOfAFilter) {
    const PodView first = view(properties(1, true, {1, 1}, "none", 0));
    const MixerProperties mixing =
        mixerPropertiesFromPods({first, view(properties(0, false, {0, 0}, "none", 0))});
    EXPECT_TRUE(mixing.hasControls);
    EXPECT_TRUE(mixing.isMuted) << "the first is the converter's own";
    EXPECT_EQ(mixerPropertiesFromPods({}), MixerProperties{});
}

TEST_F(MixerPod, PlacesOfPorts) {
    spa_pod_frame frame{};
    spa_pod_builder_push_object(builder(), &frame, SPA_TYPE_OBJECT_ParamPortConfig, SPA_PARAM_PortConfig);
    spa_pod_builder_prop(builder(), SPA_PARAM_PORT_CONFIG_format, 0);
    spa_audio_info_raw info{};
    info.format = SPA_AUDIO_FORMAT_F32P;
    info.rate = 48000;
    info.channels = 2;
    info.position[0] = SPA_AUDIO_CHANNEL_FL;
    info.position[1] = SPA_AUDIO_CHANNEL_RR;
    spa_format_audio_raw_build(builder(), SPA_PARAM_Format, &info);
    const void* const pod = spa_pod_builder_pop(builder(), &frame);
    EXPECT_EQ(portPositionsFromPods({view(pod)}),
              (std::vector<std::uint32_t>{SPA_AUDIO_CHANNEL_FL, SPA_AUDIO_CHANNEL_RR}));
    EXPECT_TRUE(portPositionsFromPods({}).empty());
}

}  // namespace
}  // namespace purlock::host_linux
