#pragma once

#include <pipewire/pipewire.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/linux/pipewire/bound_objects.h"
#include "platform/linux/pipewire/clock_sampler.h"
#include "platform/linux/pipewire/handles.h"
#include "platform/linux/pipewire/records.h"
#include "platform/linux/pipewire/registry_handle.h"

namespace purlock::host_linux {

/// One connection to the audio server, from its first message to its loss: fills a mirror with what the
/// server tells.
///
/// Owned by the hardware layer, made and ended on the loop's thread, but never from within one of its
/// observers. After changes it asks the server for an echo (a "sync") and calls `settled` when that has come:
/// by then everything that belonged to the same changes has arrived too, and a burst of any length has cost
/// one round trip at a time.
class Session final : private BoundObjects::Owner {
  public:
    struct Observers {
        std::function<void()> settled;  // the mirror is consistent and has changed, or the server is back
        std::function<void()> clocksChanged;
        std::function<void()> programConnected;  // another one than this
        std::function<void()> silent;            // the server owes an answer for too long
        std::function<void()> lost;              // the connection is broken, or has been silent for good
    };

    /// Null when there is no server to connect to. Takes no longer than making the socket.
    static std::unique_ptr<Session> connect(pw_context* context, Observers observers);

    Session(Core core, pw_loop* loop, Observers observers);
    ~Session() override;

    const AudioGraph& graph() const { return graph_; }

    /// Whether the server has answered since the connection was made, and owes no answer for too long.
    bool isResponding() const { return hasAnswered_ && !isSilent_; }

    /// What the session manager's store says, asked for in another way than by listening to it.
    void setDefaultSinkName(std::optional<std::string> name);

    /// Has the server prove that it lives.
    void check() { requestEcho(); }

    /// Whether the server tells the graphs' clocks.
    bool knowsClocks() const { return clocks_.isAbleTo(); }

    /// Something changed that may change the graphs' clocks.
    void sampleClocks() { clocks_.sample(); }

    /// Whether something did all the same.
    void glanceAtClocks() { clocks_.glance(); }

  private:
    void global(std::uint32_t id, const char* type, std::uint32_t version, const spa_dict* properties);
    void globalRemoved(std::uint32_t id);
    void echoed(int sequence);
    void failed(std::uint32_t id, int result);
    void stayedSilent();

    AudioGraph& mirror() override { return graph_; }
    pw_registry* registry() override { return registry_.get(); }
    void changed() override;
    std::uint64_t nextEcho() const override { return echoesSent_ + 1; }

    void requestEcho();
    void sawClocks(const std::vector<GraphClock>& clocks);

    static const pw_core_events coreEvents;
    static const pw_registry_events registryEvents;

    const Observers observers_;
    AudioGraph graph_;
    Core core_;
    Registry registry_;
    Listener coreListener_;
    Listener registryListener_;
    BoundObjects objects_;
    ClockSampler clocks_;
    LoopTimer silence_;
    std::uint64_t echoesSent_ = 0;
    int echoSequence_ = 0;
    bool isEchoDue_ = false;
    bool hasChanged_ = false;   // since the echo was asked for
    bool isUnsettled_ = false;  // something changed, and `settled` has not been called since
    bool hasAnswered_ = false;
    bool isSilent_ = false;
};

}  // namespace purlock::host_linux
