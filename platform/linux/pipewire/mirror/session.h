#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/pipewire/mirror/bound_objects.h"
#include "platform/linux/pipewire/mirror/clock_sampler.h"
#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/pipewire/mirror/server_sync.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// One connection to the audio server, from its first message to its loss: fills a mirror with what the
/// server tells.
///
/// Made and ended on the loop's thread, but never from within one of its observers.
class Session {
  public:
    struct Observers {
        std::function<void()> synced;  // the mirror has changed and is whole, or the server answers again
        std::function<void()> clocksChanged;
        std::function<void()> clientConnected;  // another one than this
        std::function<void()> silent;           // the server owes an answer for too long
        std::function<void()> lost;             // the connection is broken, or has been silent for good
    };

    /// Null when there is no server to connect to. Takes no longer than making the socket.
    static std::unique_ptr<Session> connect(pw_context* context, const Observers& observers);

    Session(Core core, pw_loop* loop, const Observers& observers);

    const AudioGraph& graph() const { return graph_; }
    bool isResponding() const { return sync_.isResponding(); }

    /// True if the server is still telling a change of the graph.
    bool isInTransition() const;

    /// Takes the default sink of the session manager's store, which was asked for instead of listened to.
    void setDefaultSinkName(std::optional<std::string> name);

    /// Has the server prove that it lives, and looks now and then for a change of the graphs' clocks that
    /// nothing has announced.
    void checkUp();

  private:
    void done(std::uint32_t id, int sequence);
    void error(std::uint32_t id, int, int result, const char*);
    void global(std::uint32_t id, std::uint32_t, const char* type, std::uint32_t, const spa_dict* properties);
    void globalRemove(std::uint32_t id);
    void synced();
    void clockCycles(const std::vector<GraphClock>& clocks);

    static const pw_core_events coreEvents;
    static const pw_registry_events registryEvents;

    const Observers observers_;
    AudioGraph graph_;
    Core core_;
    Registry registry_;
    Listener coreListener_;
    Listener registryListener_;
    ServerSync sync_;
    BoundObjects objects_;
    ClockSampler clocks_;
};

}  // namespace purlock::host_linux
