#include "platform/linux/pipewire/rules/device_stream.h"

#include <algorithm>
#include <utility>

#include "platform/linux/pipewire/rules/link_codec.h"
#include "platform/linux/pipewire/rules/node_names.h"
#include "platform/linux/pipewire/rules/rate_reason.h"
#include "platform/linux/pipewire/rules/sound_path.h"

namespace purlock::host_linux {

namespace {

void addOnce(std::vector<Alteration>& list, std::vector<Alteration> more) {
    for (Alteration& each : more) {
        if (std::find(list.begin(), list.end(), each) == list.end()) list.push_back(std::move(each));
    }
}

bool areEqual(const SoundFormat& left, const SoundFormat& right) {
    return left.sampleRate == right.sampleRate && left.layout.bits == right.layout.bits;
}

bool isFedUnchanged(const SoundFormat& physical) {
    return physical.kind == SoundKind::encoded || physical.kind == SoundKind::dsd;
}

AudioFormat audioFormat(const StreamDescription& stream) {
    return AudioFormat{stream.sampleRate, stream.bitsPerChannel, stream.channelsPerFrame, stream.formatFlags,
                       stream.formatID};
}

void noteStream(MixerWork& work, const PlayingPath& playing) {
    const auto& format = playing.nodes.front()->format;
    if (!format) return;
    work.streamFormat = audioFormat(streamDescription(*format));
    work.streamProcess = playing.process;
}

class StreamReader {
  public:
    StreamReader(std::uint64_t sink, const AudioGraph& graph, const CardFacts& cards, const Routes& routes,
                 const std::vector<PlayingPath>& playing)
        : serial_(sink),
          sink_(graph.nodes.at(sink)),
          graph_(graph),
          cards_(cards),
          routes_(routes),
          playing_(playing) {}

    DeviceStream read() const {
        const PcmInfo* const pcm = pcmOf(sink_, cards_);
        const bool isTaken = pcm != nullptr && isTakenByAnother(*pcm);
        DeviceStream stream = isTaken ? readTaken(*pcm) : readOwn();
        // Recorders, level meters and filters keep a node running too, but they play nothing.
        stream.isRunning = sink_.state == NodeState::running && firstThrough(sink_) != nullptr;
        if (isTaken && !stream.isRunning) {
            const PcmState state = pcm->status.state;
            stream.isRunning = state == PcmState::running || state == PcmState::draining;
        }
        return stream;
    }

  private:
    const PlayingPath* firstThrough(const NodeRecord& sink) const {
        const auto found =
            std::ranges::find_if(playing_, [&sink](const PlayingPath& each) { return each.passes(sink); });
        return found == playing_.end() ? nullptr : &*found;
    }

    // Formats

    std::optional<SoundFormat> physicalFormat(const NodeRecord& node) const {
        const PcmInfo* const pcm = pcmOf(node, cards_);
        const bool isPassedThrough = node.format && node.format->kind == SoundKind::encoded;
        // To the hardware, encoded sound looks like PCM; the server knows what it is.
        if (pcm != nullptr && pcm->parameters && !isPassedThrough) {
            return soundFormatFromHardware(*pcm->parameters);
        }
        auto format = node.format ? node.format : node.lastFormat ? node.lastFormat : node.preferred;
        if (format && format->sampleRate == 0) format->sampleRate = clockRate(node);
        return format;
    }

    DeviceStream readOwn() const {
        DeviceStream stream = readConverted();
        if (!stream.physical) stream.physical = idleFormat();
        if (!stream.virtualFormat && stream.physical) {
            stream.virtualFormat = streamDescription(*stream.physical);
        }
        addAlterations(stream.work);
        stream.work.linkCodec = linkCodecName(sink_.properties.linkCodec);
        return stream;
    }

    /// Another sound server does not tell what it does to the samples of its clients, and neither do the
    /// plugins of ALSA's library in a player.
    DeviceStream readTaken(const PcmInfo& pcm) const {
        DeviceStream stream;
        stream.physical = physicalFormat(sink_);
        const bool mayPassPlugins = pcm.parameters && pcm.parameters->isMapped;
        if (isSoundServer(*pcm.owner) || mayPassPlugins) {
            stream.work.unseenProgram = pcm.owner->command;
            return stream;
        }
        if (!stream.physical) return stream;
        stream.virtualFormat = streamDescription(*stream.physical);
        stream.work.streamFormat = audioFormat(*stream.virtualFormat);
        stream.work.streamProcess = pcm.owner->processIdentifier;
        return stream;
    }

    /// The hardware at the end of the first path on which something is lost; nothing when no path loses.
    DeviceStream readConverted() const {
        DeviceStream stream;
        for (const PlayingPath& each : playing_) {
            if (!each.passes(sink_)) continue;
            const NodeRecord& end = *each.nodes.back();
            const auto physical = physicalFormat(end);
            if (!physical || isFedUnchanged(*physical)) continue;
            const PathLoss loss = lossOnPath(each.nodes, *physical, clockRate(end));
            if (!loss.isAny()) continue;
            SoundFormat near = *physical;
            if (loss.layout) {
                near.kind = SoundKind::pcm;
                near.layout = *loss.layout;
            }
            near.sampleRate = loss.rate.value_or(physical->sampleRate);
            if (loss.rate) {
                const PathRates rates = {physical->sampleRate, clockRate(end), *loss.rate};
                stream.work.rateConversion = rateConversionOnPath(each, rates, graph_);
            }
            stream.physical = physical;
            stream.virtualFormat = streamDescription(near);
            break;
        }
        return stream;
    }

    /// The first of several devices behind a sink that runs otherwise than the sink itself.
    std::optional<SoundFormat> idleFormat() const {
        const auto ends = routes_.endsOf(serial_);
        if (sink_.format) {
            for (const std::uint64_t end : ends) {
                auto physical = physicalFormat(graph_.nodes.at(end));
                if (physical && !areEqual(*physical, *sink_.format)) return physical;
            }
        }
        return physicalFormat(graph_.nodes.at(ends.front()));
    }

    // Alterations

    void addAlterations(MixerWork& work) const {
        if (playing_.empty()) return;
        const PlayingPath* const first = firstThrough(sink_);
        noteStream(work, first != nullptr ? *first : playing_.front());
        if (first == nullptr) {
            const PlayingPath& other = playing_.front();
            work.alterations.push_back(alteration::Elsewhere{
                other.application, nameOf(other.nodes.back()->properties), nameOf(sink_.properties)});
            return;
        }
        for (const PlayingPath& each : playing_) {
            if (each.nodes.front() != first->nodes.front() || !each.passes(sink_)) continue;
            const auto physical = physicalFormat(*each.nodes.back());
            if (physical && isFedUnchanged(*physical)) continue;
            addOnce(work.alterations, alterationsOnPath(each, playing_, graph_, cards_));
        }
    }

    // Clocks

    double clockRate(const NodeRecord& node) const {
        const ServerSettings& settings = graph_.settings;
        const bool runs = node.state == NodeState::running;
        // A clock that stands still does not follow a rate that is forced meanwhile.
        if (node.clockRate && (runs || settings.forcedRate == 0)) return *node.clockRate;
        const auto playing = playingRate(node);
        if (settings.forcedRate != 0 || !playing || !runs) return settings.defaultRate();
        return settings.allows(*playing) ? *playing : settings.defaultRate();
    }

    /// The rate of the first stream that plays to a sink.
    std::optional<double> playingRate(const NodeRecord& sink) const {
        for (const PlayingPath& each : playing_) {
            const auto& format = each.nodes.front()->format;
            if (each.passes(sink) && format && format->sampleRate > 0) return format->sampleRate;
        }
        return std::nullopt;
    }

    const std::uint64_t serial_;
    const NodeRecord& sink_;
    const AudioGraph& graph_;
    const CardFacts& cards_;
    const Routes& routes_;
    const std::vector<PlayingPath>& playing_;
};

}  // namespace

DeviceStream deviceStream(std::uint64_t sink, const AudioGraph& graph, const CardFacts& cards,
                          const Routes& routes, const std::vector<PlayingPath>& playing) {
    return StreamReader(sink, graph, cards, routes, playing).read();
}

}  // namespace purlock::host_linux
