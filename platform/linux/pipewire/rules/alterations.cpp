#include "platform/linux/pipewire/rules/alterations.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "platform/linux/pipewire/rules/channel_places.h"
#include "platform/linux/pipewire/rules/node_names.h"
#include "platform/linux/pipewire/rules/software_gain.h"

namespace purlock::host_linux {

namespace {

/// A filter shows its controls or names its module; what is neither a sink nor a stream is a program that
/// takes sound in and gives sound out. Loopbacks and combined sinks hand on what they get. A card's controls
/// are the settings of its driver.
bool isFilter(const NodeRecord& node) {
    const std::string_view group = node.properties.linkGroup;
    if (node.properties.isJack) return true;  // behind another node it works on that one's sound
    if (!node.properties.isSink() && !node.properties.isStream()) return group.empty();
    const bool hasControls = node.mixing.hasControls && !node.properties.device;
    return hasControls || group.starts_with("filter-chain") || group.starts_with("echo-cancel");
}

class PathReader {
  public:
    PathReader(const PlayingPath& path, const std::vector<PlayingPath>& playing, const AudioGraph& graph,
               const CardFacts& cards)
        : path_(path), playing_(playing), graph_(graph), cards_(cards) {}

    std::vector<Alteration> read() {
        addStreamGain(*path_.nodes.front(), path_.application);
        addChannels();
        for (std::size_t i = 1; i < path_.nodes.size(); ++i) {
            addMixed(i);
            addNode(i);
        }
        return std::move(found_);
    }

  private:
    void addStreamGain(const NodeRecord& stream, const std::string& name) {
        const SoftwareGain gain = softwareGain(stream);
        if (gain.isMuted) found_.push_back(alteration::StreamMute{name});
        if (gain.volume) found_.push_back(alteration::StreamVolume{name, *gain.volume});
    }

    void addNode(std::size_t at) {
        const NodeRecord& node = *path_.nodes[at];
        const std::string name = nameOf(node.properties);
        if (isFilter(node)) addFilter(name);
        if (node.properties.isStream()) addStreamGain(node, name);
        if (!node.properties.isSink()) return;
        const bool isMonitored = at + 1 < path_.nodes.size() && !handsOnConverted(node, *path_.nodes[at + 1]);
        if (!isMonitored || node.mixing.reachesMonitor) addDeviceGain(node, name);
        if (isMonitored) return;
        addClock(node);
        if (node.mixing.dithers) found_.push_back(alteration::Dither{name});
    }

    void addDeviceGain(const NodeRecord& sink, const std::string& name) {
        const SoftwareGain gain = softwareGain(sink, libraryVolume(sink));
        if (gain.isMuted) found_.push_back(alteration::DeviceMute{name});
        if (gain.volume) found_.push_back(alteration::DeviceVolume{name, *gain.volume});
    }

    /// PCMs that open the hardware go past the library's volume.
    double libraryVolume(const NodeRecord& sink) const {
        if (!sink.properties.pcm || !sink.properties.hasLibraryVolume) return 1;
        const auto found = cards_.libraryVolumes.find(sink.properties.pcm->card);
        return found == cards_.libraryVolumes.end() ? 1 : found->second;
    }

    /// A filter's input and its output bear the same name.
    void addFilter(const std::string& name) {
        const Alteration filter = alteration::Filter{name};
        if (std::find(found_.begin(), found_.end(), filter) == found_.end()) found_.push_back(filter);
    }

    /// ALSA hardware that follows a clock other than its card's own is resampled to keep in step.
    void addClock(const NodeRecord& sink) {
        if (!sink.properties.pcm || !sink.driver) return;
        for (const auto& [serial, node] : graph_.nodes) {
            if (node.id != *sink.driver) continue;
            const bool isSameCard =
                node.properties.pcm && node.properties.pcm->card == sink.properties.pcm->card;
            if (!isSameCard) {
                found_.push_back(alteration::Clock{nameOf(sink.properties), nameOf(node.properties)});
            }
        }
    }

    // Channels

    void addChannels() {
        for (std::size_t i = 0; i + 1 < path_.nodes.size(); ++i) {
            const NodeRecord& node = *path_.nodes[i];
            const NodeRecord& next = *path_.nodes[i + 1];
            if (!node.properties.isStream() || node.properties.isJack || !node.format) continue;
            const ChannelPlaces& own = node.format->positions;
            const std::uint32_t count = node.format->channels;
            if (!own.empty() && !node.portPositions.empty() && !arriveInPlace(own, node.portPositions)) {
                const auto ports = static_cast<std::uint32_t>(node.portPositions.size());
                found_.push_back(alteration::Channels{path_.application, count, ports});
                return;
            }
            if (!linksKeepPlaces(node, next) || !handsOnInPlace(i)) {
                found_.push_back(alteration::Channels{path_.application, count, count});
                return;
            }
        }
    }

    /// True if each port that carries one of the stream's channels leads to the port of its place.
    bool linksKeepPlaces(const NodeRecord& from, const NodeRecord& to) const {
        std::set<std::uint32_t> linked;
        for (const auto& [id, link] : graph_.links) {
            if (link.outputNode != from.id || link.inputNode != to.id) continue;
            const auto output = graph_.ports.find(link.outputPort);
            const auto input = graph_.ports.find(link.inputPort);
            if (output == graph_.ports.end() || input == graph_.ports.end()) return true;  // not told
            if (!areSamePlace(output->second, input->second)) return false;
            linked.insert(output->second.number);
        }
        const ChannelPlaces& own = from.format->positions;
        if (own.size() <= 1) return true;
        for (std::uint32_t number = 0; number < from.portPositions.size(); ++number) {
            const bool carries = std::find(own.begin(), own.end(), from.portPositions[number]) != own.end();
            if (carries && !linked.contains(number)) return false;
        }
        return true;
    }

    static bool areSamePlace(const PortRecord& output, const PortRecord& input) {
        const auto isPlaced = [](const PortRecord& port) {
            return !port.channel.empty() && !port.channel.starts_with("AUX") &&
                   !port.channel.starts_with("UNK");
        };
        if (isPlaced(output) && isPlaced(input)) return output.channel == input.channel;
        return output.number == input.number;
    }

    /// A node that hands sound on does so channel by channel. The names of the places on its two sides do not
    /// count.
    bool handsOnInPlace(std::size_t stream) const {
        if (stream == 0) return true;
        const NodeRecord& sink = *path_.nodes[stream - 1];
        if (!sink.properties.isSink() || !sink.format) return true;
        const ChannelPlaces& in = sink.format->positions;
        const ChannelPlaces& out = path_.nodes[stream]->format->positions;
        return in.size() <= out.size() && std::equal(in.begin(), in.end(), out.begin());
    }

    // Other streams

    /// The sound that joins the path at one of its nodes.
    void addMixed(std::size_t at) {
        std::vector<std::string> applications;
        for (const PlayingPath& other : playing_) {
            const bool isKnown = std::ranges::find(applications, other.application) != applications.end();
            if (!isKnown && joinsAt(other, at)) applications.push_back(other.application);
        }
        if (!applications.empty()) found_.push_back(alteration::Mixed{std::move(applications)});
    }

    bool joinsAt(const PlayingPath& other, std::size_t at) const {
        const auto place = std::find(other.nodes.begin(), other.nodes.end(), path_.nodes[at]);
        if (place == other.nodes.begin() || place == other.nodes.end()) return false;
        const NodeRecord* const before = *std::prev(place);
        const NodeRecord* const ours = path_.nodes[at - 1];
        if (before == ours) return false;  // joined further up
        const auto theirPorts = inputPorts(*before, **place);
        const auto ourPorts = inputPorts(*ours, **place);
        return std::ranges::any_of(theirPorts, [&](auto port) { return ourPorts.contains(port); });
    }

    std::set<std::uint32_t> inputPorts(const NodeRecord& from, const NodeRecord& to) const {
        std::set<std::uint32_t> ports;
        for (const auto& [id, link] : graph_.links) {
            if (link.outputNode == from.id && link.inputNode == to.id) ports.insert(link.inputPort);
        }
        return ports;
    }

    const PlayingPath& path_;
    const std::vector<PlayingPath>& playing_;
    const AudioGraph& graph_;
    const CardFacts& cards_;
    std::vector<Alteration> found_;
};

}  // namespace

std::vector<Alteration> alterationsOnPath(const PlayingPath& path, const std::vector<PlayingPath>& playing,
                                          const AudioGraph& graph, const CardFacts& cards) {
    if (path.nodes.size() < 2) return {};
    return PathReader(path, playing, graph, cards).read();
}

}  // namespace purlock::host_linux
