#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "base/running_applications.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// The process and application behind a client of the audio server.
struct ClientIdentity {
    std::int32_t processIdentifier = 0;  // 0 when it is on another machine or cannot be told
    std::optional<std::string> bundleID;

    bool operator==(const ClientIdentity&) const = default;
};

/// Tells the application behind a client from the processes between them: the sound server that speaks
/// PulseAudio for its own clients, and the portal that opens the connection for a sandbox. Owned and called
/// by the loop's thread.
class ClientIdentities {
  public:
    ClientIdentities(RunningApplications& applications, std::string hostName)
        : applications_(applications), hostName_(std::move(hostName)) {}

    /// `stream` is one of the client's nodes. The identity of a client is kept until its properties change.
    const ClientIdentity& identityOf(const ClientRecord& client, const NodeProperties& stream);

    /// True if some client's application is not known yet, but may be when it is asked for again.
    bool isAnyUnresolved() const;

    /// The application behind any process; not kept.
    std::optional<std::string> bundleIDOfProcess(std::int32_t process);

    /// Forgets the clients that are not in the graph any more.
    void retain(const AudioGraph& graph);
    void clear() { known_.clear(); }

  private:
    struct Found {
        ClientIdentity identity;
        bool isNamedByItself = false;  // by the client alone, as long as nothing else names it
    };
    struct Known {
        ClientProperties properties;
        std::string streamApplication;
        Found found;
        int questions = 0;

        bool isUnresolved() const;
    };

    Found find(const ClientProperties& client, const NodeProperties& stream);
    ClientIdentity findInSandbox(const std::string& application, const ClientProperties& client);

    RunningApplications& applications_;
    const std::string hostName_;
    std::map<std::uint64_t, Known> known_;  // by the client's serial
};

}  // namespace purlock::host_linux
