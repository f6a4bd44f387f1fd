#pragma once

#include <spa/param/audio/raw.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/pipewire/rules/records.h"

namespace purlock::test {

using host_linux::AudioGraph;
using host_linux::NodeRecord;
using host_linux::NodeRole;
using host_linux::NodeState;
using host_linux::SampleEncoding;
using host_linux::SampleLayout;
using host_linux::SoundFormat;

inline constexpr SampleLayout u8Layout = {.bits = 8, .container = 8};
inline constexpr SampleLayout s16Layout = {16, 16, SampleEncoding::signedInteger};
inline constexpr SampleLayout s24Layout = {24, 24, SampleEncoding::signedInteger};
inline constexpr SampleLayout s32Layout = {32, 32, SampleEncoding::signedInteger};
inline constexpr SampleLayout f32Layout = {32, 32, SampleEncoding::floatingPoint};

inline SoundFormat stereo(const SampleLayout& layout, double rate) {
    return {.layout = layout,
            .sampleRate = rate,
            .channels = 2,
            .positions = {SPA_AUDIO_CHANNEL_FL, SPA_AUDIO_CHANNEL_FR}};
}

/// A graph that a test makes by short words. Serials and ids of nodes are the same number.
class GraphWords {
  public:
    NodeRecord& node(std::uint32_t id, NodeRole role, const std::string& name) {
        NodeRecord& record = graph.nodes[id];
        record.id = id;
        record.properties.role = role;
        record.properties.name = name;
        record.state = NodeState::running;
        record.portPositions = {SPA_AUDIO_CHANNEL_FL, SPA_AUDIO_CHANNEL_FR};
        return record;
    }
    NodeRecord& sink(std::uint32_t id, const std::string& name, const SoundFormat& format) {
        NodeRecord& record = node(id, NodeRole::sink, name);
        record.format = format;
        return record;
    }
    NodeRecord& stream(std::uint32_t id, const std::string& application, const SoundFormat& format) {
        NodeRecord& record = node(id, NodeRole::outputStream, application);
        record.properties.applicationName = application;
        record.format = format;
        return record;
    }
    /// Both channels of two nodes; the ports of a node are its number times 10, and one more.
    void link(std::uint32_t from, std::uint32_t to, bool isCrossed = false) {
        constexpr const char* places[] = {"FL", "FR"};
        for (std::uint32_t channel = 0; channel < 2; ++channel) {
            const std::uint32_t other = isCrossed ? 1 - channel : channel;
            const std::uint32_t output = from * 100 + channel;
            const std::uint32_t input = to * 100 + 50 + other;
            graph.ports[output] = {from, channel, places[channel]};
            graph.ports[input] = {to, other, places[other]};
            graph.links[static_cast<std::uint32_t>(graph.links.size()) + 1] = {from, to, output, input};
        }
    }

    AudioGraph graph;
};

}  // namespace purlock::test
