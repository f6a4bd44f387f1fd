#include "platform/linux/pipewire/hardware/answer_builder.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "base/text.h"
#include "platform/linux/pipewire/rules/device_stream.h"
#include "platform/linux/pipewire/rules/node_names.h"
#include "platform/linux/pipewire/rules/routes.h"
#include "platform/linux/pipewire/rules/transport_rule.h"

namespace purlock::host_linux {

namespace {

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

class AnswerBuilder {
  public:
    AnswerBuilder(const AudioGraph& graph, const CardFacts& cards, std::uint64_t connection,
                  ClientIdentities& identities, ObjectIDs& ids)
        : graph_(graph), cards_(cards), connection_(connection), identities_(identities), ids_(ids) {}

    Answers build() {
        addClients();
        addHardwareOwners();
        std::vector<DeviceAnswers> devices;
        for (const auto& [serial, node] : graph_.nodes) {
            const NodeProperties& properties = node.properties;
            const bool isDevice = properties.isSink() || properties.role == NodeRole::source;
            if (isDevice && !node.isArriving) devices.push_back(deviceAnswers(serial, node));
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
            if (!node.properties.isStream() || routes_.isRelay(node)) continue;
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
        for (const Routes::Path& serials : routes_.pathsFrom(serial)) {
            PlayingPath& path = playing_.emplace_back();
            path.application = application;
            path.process = process.processIdentifier;
            for (const std::uint64_t each : serials) path.nodes.push_back(&graph_.nodes.at(each));
        }
    }

    static void addDevice(ProcessAnswers& process, AudioObjectID device) {
        auto& devices = process.devices;
        if (std::find(devices.begin(), devices.end(), device) == devices.end()) devices.push_back(device);
    }

    void addHardwareOwners() {
        for (const auto& [serial, node] : graph_.nodes) {
            const PcmInfo* const pcm = pcmOf(node, cards_);
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
            const auto display = cards_.displays.find(*properties.pcm);
            if (display != cards_.displays.end()) facts.display = display->second;
        }

        DeviceAnswers answers;
        answers.id = deviceID(serial);
        answers.name = nameOf(properties);
        answers.transport = transportCode(properties, facts);
        answers.uid = uidOf(properties, answers.transport, facts.device);
        if (!properties.isSink()) return answers;
        answers.streams = {ids_.idFor({ObjectKind::stream, connection_, serial})};
        DeviceStream stream = deviceStream(serial, graph_, cards_, routes_, playing_);
        answers.isRunning = stream.isRunning ? 1 : 0;
        if (stream.physical) answers.physicalFormat = streamDescription(*stream.physical);
        answers.virtualFormat = stream.virtualFormat;
        answers.mixerWork = std::move(stream.work);
        return answers;
    }

    AudioObjectID defaultOutput() {
        const std::pair<const std::uint64_t, NodeRecord>* best = nullptr;
        for (const auto& each : graph_.nodes) {
            const NodeProperties& properties = each.second.properties;
            if (!properties.isSink() || each.second.isArriving) continue;
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
    const CardFacts& cards_;
    const std::uint64_t connection_;
    ClientIdentities& identities_;
    ObjectIDs& ids_;
    const Routes routes_{graph_};
    std::vector<ProcessAnswers> processes_;
    std::vector<PlayingPath> playing_;  // in the order of the processes
};

}  // namespace

Answers buildAnswers(const AudioGraph& graph, const CardFacts& cards, std::uint64_t connection,
                     ClientIdentities& identities, ObjectIDs& ids) {
    return AnswerBuilder(graph, cards, connection, identities, ids).build();
}

}  // namespace purlock::host_linux
