#include "platform/linux/pipewire/hardware/client_identity.h"

#include <algorithm>
#include <set>

namespace purlock::host_linux {

namespace {

constexpr std::string_view pulseServerApi = "pipewire-pulse";

std::optional<std::string> named(const std::string& text) {
    if (text.empty()) return std::nullopt;
    return text;
}

}  // namespace

/// A process may be seen before its control group or its script says whose it is: one that nothing but itself
/// names is asked for a few times.
bool ClientIdentities::Known::isUnresolved() const {
    const bool isNamed = found.identity.bundleID && !found.isNamedByItself;
    return questions < (isNamed ? 1 : 4);
}

bool ClientIdentities::isAnyUnresolved() const {
    return std::ranges::any_of(known_, [](const auto& each) { return each.second.isUnresolved(); });
}

const ClientIdentity& ClientIdentities::identityOf(const ClientRecord& client, const NodeProperties& stream) {
    Known& known = known_[client.serial];
    if (known.properties != client.properties || known.streamApplication != stream.application) {
        known.questions = 0;
    }
    if (!known.isUnresolved()) return known.found.identity;
    known = {client.properties, stream.application, find(client.properties, stream), known.questions + 1};
    return known.found.identity;
}

std::optional<std::string> ClientIdentities::bundleIDOfProcess(std::int32_t process) {
    const auto application = applications_.runningApplicationWithProcessIdentifier(process);
    return application ? application->bundleIdentifier : std::nullopt;
}

ClientIdentity ClientIdentities::findInSandbox(const std::string& application,
                                               const ClientProperties& client) {
    const auto instances = applications_.runningApplicationsWithBundleIdentifier(application);
    if (!instances.empty()) return {instances.front().processIdentifier, application};
    // The connected process is the portal's; the claimed one counts from 1 in the sandbox. Neither is the
    // player.
    return {client.claimedProcess.value_or(0), application};
}

ClientIdentities::Found ClientIdentities::find(const ClientProperties& client, const NodeProperties& stream) {
    if (!client.portalApplication.empty()) return {findInSandbox(client.portalApplication, client)};
    const bool throughPulse = client.api == pulseServerApi;
    if (throughPulse && !client.host.empty() && !hostName_.empty() && client.host != hostName_) {
        return {{0, named(client.application)}};  // over the network; its numbers mean nothing here
    }
    if (throughPulse && client.access == "flatpak" && !client.application.empty()) {
        return {findInSandbox(client.application, client)};
    }
    // The kernel's word is better than the client's, except where the other end is the PulseAudio server.
    auto process = throughPulse ? client.claimedProcess : client.connectedProcess;
    if (!process) process = stream.processIdentifier ? stream.processIdentifier : client.claimedProcess;
    ClientIdentity identity{process.value_or(0), std::nullopt};
    if (identity.processIdentifier > 0) identity.bundleID = bundleIDOfProcess(identity.processIdentifier);
    const bool isNamedByItself = !identity.bundleID;
    if (!identity.bundleID) identity.bundleID = named(client.application);
    if (!identity.bundleID) identity.bundleID = named(stream.application);
    return {identity, isNamedByItself};
}

void ClientIdentities::retain(const AudioGraph& graph) {
    std::set<std::uint64_t> present;
    for (const auto& [id, client] : graph.clients) present.insert(client.serial);
    std::erase_if(known_, [&present](const auto& each) { return !present.contains(each.first); });
}

}  // namespace purlock::host_linux
