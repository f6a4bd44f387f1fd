#include "platform/linux/pipewire/hardware/answer_builder.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "base/text.h"
#include "platform/linux/pipewire/rules/alterations.h"
#include "platform/linux/pipewire/rules/link_codec.h"
#include "platform/linux/pipewire/rules/node_names.h"
#include "platform/linux/pipewire/rules/rate_reason.h"
#include "platform/linux/pipewire/rules/routes.h"
#include "platform/linux/pipewire/rules/sound_path.h"
#include "platform/linux/pipewire/rules/transport_rule.h"

namespace purlock::host_linux {

namespace {

bool isDevice(NodeRole role) {
    return role == NodeRole::sink || role == NodeRole::duplex || role == NodeRole::source;
}

bool hasOutput(NodeRole role) {
    return role == NodeRole::sink || role == NodeRole::duplex;
}

const PcmView* pcmOf(const NodeRecord& node, const HardwareSight& hardware) {
    if (!node.properties.pcm || !hasOutput(node.properties.role)) return nullptr;
    const auto found = hardware.pcms.find(*node.properties.pcm);
    return found == hardware.pcms.end() ? nullptr : &found->second;
}

/// The part of a USB card's long name that the device itself wrote: "<vendor> <product>".
std::string_view describedByDevice(std::string_view longName) {
    const auto end = longName.find(" at usb-");
    return end == std::string_view::npos ? std::string_view() : longName.substr(0, end);
}

/// The device database may call a product by another name than the device's own descriptor does, and it is
/// the descriptor's name that is looked for in the UID.
std::string uidOf(const NodeProperties& node, std::uint32_t transport, const DeviceProperties* device) {
    if (transport != kAudioDeviceTransportTypeUSB || device == nullptr) return node.name;
    const std::string_view described = describedByDevice(device->cardLongName);
    const bool hidesProduct = !described.empty() && !contains(described, device->productName);
    return joined({node.name, ":", device->vendorName, ":", hidesProduct ? described : device->productName});
}

/// A running stream on its way to one end of its sound.
struct Playing {
    std::int32_t process = 0;
    std::uint64_t stream = 0;
    Routes::Path serials;
    PlayingPath path;

    bool passes(std::uint64_t node) const {
        return std::find(serials.begin() + 1, serials.end(), node) != serials.end();
    }
};

/// The formats of a device's stream, and the alterations between the applications and its hardware.
struct Judgement {
    std::optional<SoundFormat> physical;
    std::optional<StreamDescription> virtualFormat;
    MixerWork work;
};

void addOnce(std::vector<Alteration>& list, std::vector<Alteration> more) {
    for (Alteration& each : more) {
        if (std::find(list.begin(), list.end(), each) == list.end()) list.push_back(std::move(each));
    }
}

bool areEqual(const SoundFormat& left, const SoundFormat& right) {
    return left.sampleRate == right.sampleRate && left.layout.bits == right.layout.bits;
}

class AnswerBuilder {
  public:
    AnswerBuilder(const AudioGraph& graph, const HardwareSight& hardware, std::uint64_t connection,
                  ClientIdentities& identities, ObjectIDs& ids)
        : graph_(graph), hardware_(hardware), connection_(connection), identities_(identities), ids_(ids) {}

    Answers build() {
        addClients();
        addHardwareOwners();
        std::vector<DeviceAnswers> devices;
        for (const auto& [serial, node] : graph_.nodes) {
            if (isDevice(node.properties.role) && !node.isArriving) {
                devices.push_back(deviceAnswers(serial, node));
            }
        }
        Answers answers(std::move(devices), defaultOutput(), std::move(processes_));
        ids_.sweep();
        return answers;
    }

  private:
    AudioObjectID deviceID(std::uint64_t serial) {
        return ids_.idFor({ObjectKind::device, connection_, serial});
    }

    // Processes

    void addClients() {
        std::map<std::uint64_t, std::vector<std::uint64_t>> streams;  // serials, by the client's serial
        std::map<std::uint64_t, const ClientRecord*> clients;
        for (const auto& [serial, node] : graph_.nodes) {
            if (node.properties.role != NodeRole::outputStream || routes_.isRelay(node)) continue;
            const auto client = graph_.clients.find(node.properties.client.value_or(0));
            if (client == graph_.clients.end()) continue;
            clients[client->second.serial] = &client->second;
            streams[client->second.serial].push_back(serial);
        }
        for (const auto& [serial, client] : clients) addClient(*client, streams[serial]);
    }

    void addClient(const ClientRecord& client, const std::vector<std::uint64_t>& streams) {
        ProcessAnswers process;
        process.id = ids_.idFor({ObjectKind::process, connection_, client.serial});
        const auto& first = graph_.nodes.at(streams.front()).properties;
        const ClientIdentity& identity = identities_.identityOf(client, first);
        process.processIdentifier = identity.processIdentifier;
        process.bundleID = identity.bundleID;
        for (const std::uint64_t serial : streams) addStream(process, serial);
        processes_.push_back(std::move(process));
    }

    /// A stream that reaches no sink is not heard: it does not play.
    void addStream(ProcessAnswers& process, std::uint64_t serial) {
        const NodeRecord& node = graph_.nodes.at(serial);
        const std::vector<std::uint64_t> sinks = routes_.sinksFrom(serial);
        for (const std::uint64_t sink : sinks) addDevice(process, deviceID(sink));
        if (node.state != NodeState::running || sinks.empty()) return;
        process.isRunningOutput = 1;
        const std::string application = applicationNameOf(node.properties, graph_);
        for (Routes::Path& serials : routes_.pathsFrom(serial)) {
            PlayingPath path{{}, application};
            for (const std::uint64_t each : serials) path.nodes.push_back(&graph_.nodes.at(each));
            paths_.push_back(path);
            playing_.push_back({process.processIdentifier, serial, std::move(serials), std::move(path)});
        }
    }

    static void addDevice(ProcessAnswers& process, AudioObjectID device) {
        auto& devices = process.devices;
        if (std::find(devices.begin(), devices.end(), device) == devices.end()) devices.push_back(device);
    }

    void addHardwareOwners() {
        for (const auto& [serial, node] : graph_.nodes) {
            const PcmView* const pcm = pcmOf(node, hardware_);
            if (pcm != nullptr && isTakenByAnother(*pcm)) addOwner(*pcm->owner, deviceID(serial));
        }
    }

    /// One object for an owner, however many PCMs it has open.
    void addOwner(const PcmOwner& owner, AudioObjectID device) {
        const AudioObjectID id = ids_.idFor(
            {ObjectKind::hardwareOwner, connection_, static_cast<std::uint64_t>(owner.processIdentifier)});
        for (ProcessAnswers& each : processes_) {
            if (each.id == id) return addDevice(each, device);
        }
        ProcessAnswers process;
        process.id = id;
        process.processIdentifier = owner.processIdentifier;
        process.bundleID = identities_.bundleIDOfProcess(owner.processIdentifier);
        process.isRunningOutput = 1;
        process.devices = {device};
        processes_.push_back(std::move(process));
    }

    // Devices

    DeviceAnswers deviceAnswers(std::uint64_t serial, const NodeRecord& node) {
        const NodeProperties& properties = node.properties;
        const auto device = graph_.devices.find(properties.device.value_or(~0U));
        TransportFacts facts;
        if (device != graph_.devices.end()) facts.device = &device->second;
        facts.feedsSeveral = routes_.relayCount(node) > 1;
        if (properties.pcm) {
            const auto display = hardware_.displays.find(*properties.pcm);
            if (display != hardware_.displays.end()) facts.display = display->second;
        }

        DeviceAnswers answers;
        answers.id = deviceID(serial);
        answers.name = nameOf(properties);
        answers.transport = transportType(properties, facts);
        answers.uid = uidOf(properties, answers.transport, facts.device);
        if (!hasOutput(properties.role)) return answers;
        answers.isRunning = isRunning(serial, node) ? 1 : 0;
        answers.streams = {ids_.idFor({ObjectKind::stream, connection_, serial})};
        Judgement judgement = judge(serial, node);
        if (judgement.physical) answers.physicalFormat = streamDescription(*judgement.physical);
        answers.virtualFormat = judgement.virtualFormat;
        answers.mixerWork = std::move(judgement.work);
        return answers;
    }

    bool isPlayedTo(std::uint64_t sink) const {
        return std::any_of(playing_.begin(), playing_.end(),
                           [sink](const Playing& each) { return each.passes(sink); });
    }

    /// Recorders, level meters and filters keep a node running too, but they play nothing.
    bool isRunning(std::uint64_t serial, const NodeRecord& node) const {
        if (node.state == NodeState::running && isPlayedTo(serial)) return true;
        const PcmView* const pcm = pcmOf(node, hardware_);
        return pcm != nullptr && isTakenByAnother(*pcm) &&
               (pcm->status.state == PcmState::running || pcm->status.state == PcmState::draining);
    }

    // Formats

    std::optional<SoundFormat> physicalFormat(std::uint64_t serial) const {
        const NodeRecord& node = graph_.nodes.at(serial);
        const PcmView* const pcm = pcmOf(node, hardware_);
        const bool isPassedThrough = node.format && node.format->kind == SoundKind::encoded;
        // To the hardware, encoded sound looks like PCM; the server knows what it is.
        if (pcm != nullptr && pcm->parameters && !isPassedThrough) {
            return soundFormatFromHardware(*pcm->parameters);
        }
        auto format = node.format ? node.format : node.lastFormat ? node.lastFormat : node.preferred;
        if (format && format->sampleRate == 0) format->sampleRate = clockRate(serial);
        return format;
    }

    Judgement judge(std::uint64_t serial, const NodeRecord& node) const {
        const PcmView* const pcm = pcmOf(node, hardware_);
        if (pcm != nullptr && isTakenByAnother(*pcm)) return judgeTaken(serial, *pcm);
        Judgement judgement = judgeConverted(serial);
        if (!judgement.physical) judgement = judgeIdle(serial, node);
        if (!judgement.virtualFormat && judgement.physical) {
            judgement.virtualFormat = streamDescription(*judgement.physical);
        }
        MixerWork work = mixerWork(serial, node);
        work.rateConversion = std::move(judgement.work.rateConversion);
        work.linkCodec = linkCodecName(node.properties.linkCodec);
        judgement.work = std::move(work);
        return judgement;
    }

    /// Another sound server does not tell what it does to the samples of its clients, and neither do the
    /// plugins of ALSA's library in a player.
    Judgement judgeTaken(std::uint64_t serial, const PcmView& pcm) const {
        Judgement judgement;
        judgement.physical = physicalFormat(serial);
        const bool mayPassPlugins = pcm.parameters && pcm.parameters->isMapped;
        if (isSoundServer(*pcm.owner) || mayPassPlugins) {
            judgement.work.unseenProgram = pcm.owner->command;
            return judgement;
        }
        if (!judgement.physical) return judgement;
        judgement.virtualFormat = streamDescription(*judgement.physical);
        judgement.work.streamFormat = audioFormat(*judgement.virtualFormat);
        judgement.work.streamProcess = pcm.owner->processIdentifier;
        return judgement;
    }

    /// The hardware at the end of the first path on which something is lost; nothing when no path loses.
    Judgement judgeConverted(std::uint64_t serial) const {
        Judgement judgement;
        for (const Playing& each : playing_) {
            if (!each.passes(serial)) continue;
            const std::uint64_t end = each.serials.back();
            const auto physical = physicalFormat(end);
            if (!physical || isFedUnchanged(*physical)) continue;
            const PathLoss loss = lossOnPath(each.path.nodes, *physical, clockRate(end));
            if (!loss.isAny()) continue;
            SoundFormat near = *physical;
            if (loss.layout) {
                near.kind = SoundKind::pcm;
                near.layout = *loss.layout;
            }
            near.sampleRate = loss.rate.value_or(physical->sampleRate);
            if (loss.rate) {
                const PathRates rates = {physical->sampleRate, clockRate(end), *loss.rate};
                judgement.work.rateConversion = rateConversionOnPath(each.path, rates, graph_);
            }
            judgement.physical = physical;
            judgement.virtualFormat = streamDescription(near);
            break;
        }
        return judgement;
    }

    /// The first of several devices behind a sink that runs otherwise than the sink itself.
    Judgement judgeIdle(std::uint64_t serial, const NodeRecord& node) const {
        const auto ends = routes_.endsOf(serial);
        Judgement judgement;
        judgement.physical = physicalFormat(ends.front());
        if (!node.format) return judgement;
        for (const std::uint64_t end : ends) {
            const auto physical = physicalFormat(end);
            if (!physical || areEqual(*physical, *node.format)) continue;
            judgement.physical = physical;
            break;
        }
        return judgement;
    }

    static bool isFedUnchanged(const SoundFormat& physical) {
        return physical.kind == SoundKind::encoded || physical.kind == SoundKind::dsd;
    }

    // Alterations

    MixerWork mixerWork(std::uint64_t serial, const NodeRecord& node) const {
        const auto first = std::find_if(playing_.begin(), playing_.end(),
                                        [serial](const Playing& each) { return each.passes(serial); });
        MixerWork work;
        if (first == playing_.end()) {
            addElsewhere(work, node);
            return work;
        }
        noteStream(work, *first);
        for (const Playing& each : playing_) {
            if (each.stream != first->stream || !each.passes(serial)) continue;
            const auto physical = physicalFormat(each.serials.back());
            if (physical && isFedUnchanged(*physical)) continue;
            addOnce(work.alterations, alterationsOnPath(each.path, paths_, graph_, hardware_));
        }
        return work;
    }

    void addElsewhere(MixerWork& work, const NodeRecord& node) const {
        if (playing_.empty()) return;
        const Playing& other = playing_.front();
        noteStream(work, other);
        work.alterations.push_back(alteration::Elsewhere{
            other.path.application, nameOf(other.path.nodes.back()->properties), nameOf(node.properties)});
    }

    static void noteStream(MixerWork& work, const Playing& playing) {
        const auto& format = playing.path.nodes.front()->format;
        if (!format) return;
        work.streamFormat = audioFormat(streamDescription(*format));
        work.streamProcess = playing.process;
    }

    static AudioFormat audioFormat(const StreamDescription& stream) {
        return AudioFormat{stream.sampleRate, stream.bitsPerChannel, stream.channelsPerFrame,
                           stream.formatFlags, stream.formatID};
    }

    // Clocks

    double clockRate(std::uint64_t serial) const {
        const NodeRecord& node = graph_.nodes.at(serial);
        const ServerSettings& settings = graph_.settings;
        const bool runs = node.state == NodeState::running;
        // A clock that stands still does not follow a rate that is forced meanwhile.
        if (node.clockRate && (runs || settings.forcedRate == 0)) return *node.clockRate;
        const auto playing = playingRate(serial);
        if (settings.forcedRate != 0 || !playing || !runs) return settings.defaultRate();
        const auto& allowed = settings.allowedRates;
        const bool follows =
            std::any_of(allowed.begin(), allowed.end(), [&](auto rate) { return rate == *playing; });
        return follows ? *playing : settings.defaultRate();
    }

    /// The rate of the first stream that plays to a sink.
    std::optional<double> playingRate(std::uint64_t sink) const {
        for (const Playing& each : playing_) {
            const auto& format = each.path.nodes.front()->format;
            if (each.passes(sink) && format && format->sampleRate > 0) return format->sampleRate;
        }
        return std::nullopt;
    }

    AudioObjectID defaultOutput() {
        const std::pair<const std::uint64_t, NodeRecord>* best = nullptr;
        for (const auto& each : graph_.nodes) {
            const NodeProperties& properties = each.second.properties;
            if (!hasOutput(properties.role) || each.second.isArriving) continue;
            if (graph_.defaultSinkName && properties.name == *graph_.defaultSinkName) {
                return deviceID(each.first);
            }
            if (best == nullptr || properties.sessionPriority > best->second.properties.sessionPriority) {
                best = &each;
            }
        }
        return best == nullptr ? 0 : deviceID(best->first);
    }

    const AudioGraph& graph_;
    const HardwareSight& hardware_;
    const std::uint64_t connection_;
    ClientIdentities& identities_;
    ObjectIDs& ids_;
    const Routes routes_{graph_};
    std::vector<ProcessAnswers> processes_;
    std::vector<Playing> playing_;    // in the order of the processes
    std::vector<PlayingPath> paths_;  // the same paths
};

}  // namespace

bool isTakenByAnother(const PcmView& pcm) {
    constexpr std::array server = {"pipewire", "pipewire-media-", "pipewire-pulse", "wireplumber"};
    if (!pcm.owner || pcm.status.state == PcmState::closed) return false;
    return std::none_of(server.begin(), server.end(),
                        [&pcm](std::string_view command) { return pcm.owner->command == command; });
}

bool isSoundServer(const PcmOwner& owner) {
    constexpr std::array servers = {"pulseaudio", "jackd", "jackdbus", "roard",  "esd",
                                    "arts",       "artsd", "nasd",     "sndiod", "cras"};
    return std::any_of(servers.begin(), servers.end(),
                       [&owner](std::string_view command) { return owner.command == command; });
}

Answers buildAnswers(const AudioGraph& graph, const HardwareSight& hardware, std::uint64_t connection,
                     ClientIdentities& identities, ObjectIDs& ids) {
    return AnswerBuilder(graph, hardware, connection, identities, ids).build();
}

}  // namespace purlock::host_linux
