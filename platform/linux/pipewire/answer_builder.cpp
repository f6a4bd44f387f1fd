#include "platform/linux/pipewire/answer_builder.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "base/text.h"
#include "platform/linux/pipewire/routes.h"
#include "platform/linux/pipewire/transport_rule.h"

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

std::string nameOf(const NodeProperties& node) {
    if (!node.description.empty()) return node.description;
    return node.nick.empty() ? node.name : node.nick;
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

/// A process while the answers are made: its streams, by what is asked of them.
struct Process {
    struct Stream {
        bool isRunning = false;
        std::optional<double> rate;
        std::vector<std::uint64_t> sinks;  // serials

        bool reaches(std::uint64_t sink) const {
            return std::find(sinks.begin(), sinks.end(), sink) != sinks.end();
        }
    };
    ProcessAnswers answers;
    std::vector<Stream> streams;

    bool reaches(std::uint64_t sink) const {
        return std::any_of(streams.begin(), streams.end(),
                           [sink](const Stream& each) { return each.reaches(sink); });
    }
};

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
            if (isDevice(node.properties.role) && !node.isArriving)
                devices.push_back(deviceAnswers(serial, node));
        }
        std::vector<ProcessAnswers> processes;
        for (Process& process : processes_) processes.push_back(std::move(process.answers));
        Answers answers(std::move(devices), defaultOutput(), std::move(processes));
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
        Process process;
        process.answers.id = ids_.idFor({ObjectKind::process, connection_, client.serial});
        const auto& first = graph_.nodes.at(streams.front()).properties;
        const ClientIdentity& identity = identities_.identityOf(client, first);
        process.answers.processIdentifier = identity.processIdentifier;
        process.answers.bundleID = identity.bundleID;
        for (const std::uint64_t serial : streams) addStream(process, serial);
        processes_.push_back(std::move(process));
    }

    void addStream(Process& process, std::uint64_t serial) {
        const NodeRecord& node = graph_.nodes.at(serial);
        Process::Stream stream;
        stream.isRunning = node.state == NodeState::running;
        if (node.format && node.format->sampleRate > 0) stream.rate = node.format->sampleRate;
        stream.sinks = routes_.sinksFrom(serial);
        if (stream.isRunning) process.answers.isRunningOutput = 1;
        for (const std::uint64_t sink : stream.sinks) addDevice(process.answers, deviceID(sink));
        process.streams.push_back(std::move(stream));
    }

    static void addDevice(ProcessAnswers& process, AudioObjectID device) {
        auto& devices = process.devices;
        if (std::find(devices.begin(), devices.end(), device) == devices.end()) devices.push_back(device);
    }

    void addHardwareOwners() {
        for (const auto& [serial, node] : graph_.nodes) {
            const PcmView* const pcm = pcmOf(node, hardware_);
            if (pcm == nullptr || !isTakenByAnother(*pcm)) continue;
            Process process;
            const std::int32_t owner = pcm->owner->processIdentifier;
            process.answers.id =
                ids_.idFor({ObjectKind::hardwareOwner, connection_, static_cast<std::uint64_t>(owner)});
            process.answers.processIdentifier = owner;
            process.answers.bundleID = identities_.bundleIDOfProcess(owner);
            process.answers.isRunningOutput = 1;
            process.answers.devices = {deviceID(serial)};
            Process::Stream stream{true, std::nullopt, {serial}};
            if (pcm->parameters) stream.rate = pcm->parameters->sampleRate;
            process.streams.push_back(std::move(stream));
            addOwner(std::move(process));
        }
    }

    /// One object for an owner, however many PCMs it has open.
    void addOwner(Process process) {
        for (Process& each : processes_) {
            if (each.answers.id != process.answers.id) continue;
            addDevice(each.answers, process.answers.devices.front());
            each.streams.push_back(std::move(process.streams.front()));
            return;
        }
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
        answers.isRunning = isRunning(node) ? 1 : 0;
        if (!hasOutput(properties.role)) return answers;
        answers.streams = {ids_.idFor({ObjectKind::stream, connection_, serial})};
        if (auto physical = physicalFormat(node)) {
            if (physical->sampleRate == 0) physical->sampleRate = clockRate(node, playingRate(serial));
            answers.physicalFormat = streamDescription(*physical);
            answers.virtualFormat = virtualFormat(serial, node, *physical);
        }
        return answers;
    }

    bool isRunning(const NodeRecord& node) const {
        if (node.state == NodeState::running) return true;
        const PcmView* const pcm = pcmOf(node, hardware_);
        return pcm != nullptr &&
               (pcm->status.state == PcmState::running || pcm->status.state == PcmState::draining);
    }

    std::optional<SoundFormat> physicalFormat(const NodeRecord& node) const {
        const PcmView* const pcm = pcmOf(node, hardware_);
        const bool isPassedThrough = node.format && node.format->kind == SoundKind::encoded;
        // What is passed through has the shape of PCM to the hardware; the server knows what it is.
        if (pcm != nullptr && pcm->parameters && !isPassedThrough)
            return soundFormatFromHardware(*pcm->parameters);
        return node.format ? node.format : node.preferred;
    }

    StreamDescription virtualFormat(std::uint64_t serial, const NodeRecord& node,
                                    const SoundFormat& physical) const {
        const PcmView* const pcm = pcmOf(node, hardware_);
        const bool isFedUnchanged =
            physical.kind != SoundKind::pcm || (pcm != nullptr && isTakenByAnother(*pcm));
        if (isFedUnchanged) return streamDescription(physical);
        return mixerDescription(virtualRate(serial, node, physical.sampleRate), physical.channels);
    }

    /// The rate on the near side of the conversion that is nearest to the device.
    double virtualRate(std::uint64_t serial, const NodeRecord& node, double deviceRate) const {
        const auto playing = playingRate(serial);
        const double clock = clockRate(node, playing);
        return clock != deviceRate ? clock : playing.value_or(clock);
    }

    double clockRate(const NodeRecord& node, std::optional<double> playing) const {
        const ServerSettings& settings = graph_.settings;
        const bool runs = node.state == NodeState::running;
        // A clock that stands still does not follow a rate that is forced meanwhile.
        if (node.clockRate && (runs || settings.forcedRate == 0)) return *node.clockRate;
        if (settings.forcedRate != 0 || !playing || !runs) return settings.defaultRate();
        const auto& allowed = settings.allowedRates;
        const bool follows =
            std::any_of(allowed.begin(), allowed.end(), [&](auto rate) { return rate == *playing; });
        return follows ? *playing : settings.defaultRate();
    }

    /// The process that counts as a device's source: the first that plays and has the device among its own,
    /// else the first that plays at all.
    const Process* sourceOf(std::uint64_t sink) const {
        const Process* anyPlaying = nullptr;
        for (const Process& process : processes_) {
            if (process.answers.isRunningOutput == 0) continue;
            if (process.reaches(sink)) return &process;
            if (anyPlaying == nullptr) anyPlaying = &process;
        }
        return anyPlaying;
    }

    std::optional<double> playingRate(std::uint64_t sink) const {
        const Process* const source = sourceOf(sink);
        if (source == nullptr) return std::nullopt;
        const Process::Stream* anyPlaying = nullptr;
        for (const Process::Stream& stream : source->streams) {
            if (!stream.isRunning) continue;
            if (stream.reaches(sink)) return stream.rate;
            if (anyPlaying == nullptr) anyPlaying = &stream;
        }
        return anyPlaying == nullptr ? std::nullopt : anyPlaying->rate;
    }

    AudioObjectID defaultOutput() {
        const std::pair<const std::uint64_t, NodeRecord>* best = nullptr;
        for (const auto& each : graph_.nodes) {
            const NodeProperties& properties = each.second.properties;
            if (!hasOutput(properties.role) || each.second.isArriving) continue;
            if (graph_.defaultSinkName && properties.name == *graph_.defaultSinkName)
                return deviceID(each.first);
            if (best == nullptr || properties.sessionPriority > best->second.properties.sessionPriority)
                best = &each;
        }
        return best == nullptr ? 0 : deviceID(best->first);
    }

    const AudioGraph& graph_;
    const HardwareSight& hardware_;
    const std::uint64_t connection_;
    ClientIdentities& identities_;
    ObjectIDs& ids_;
    const Routes routes_{graph_};
    std::vector<Process> processes_;
};

}  // namespace

bool isTakenByAnother(const PcmView& pcm) {
    constexpr std::array server = {"pipewire", "pipewire-media-", "pipewire-pulse", "wireplumber"};
    if (!pcm.owner || pcm.status.state == PcmState::closed) return false;
    return std::none_of(server.begin(), server.end(),
                        [&pcm](std::string_view command) { return pcm.owner->command == command; });
}

Answers buildAnswers(const AudioGraph& graph, const HardwareSight& hardware, std::uint64_t connection,
                     ClientIdentities& identities, ObjectIDs& ids) {
    return AnswerBuilder(graph, hardware, connection, identities, ids).build();
}

}  // namespace purlock::host_linux
