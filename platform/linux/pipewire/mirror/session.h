#pragma once

#include <pipewire/pipewire.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/linux/pipewire/mirror/bound_objects.h"
#include "platform/linux/pipewire/mirror/clock_sampler.h"
#include "platform/linux/pipewire/mirror/handles.h"
#include "platform/linux/pipewire/mirror/registry_handle.h"
#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// One connection to the audio server, from its first message to its loss: fills a mirror with what the
/// server tells.
///
/// Owned by the hardware layer, made and ended on the loop's thread, but never from within one of its
/// observers. After changes it asks the server for a sync and calls `settled` when that is answered: by then
/// everything that belongs to the same changes has arrived. However long a burst is, one sync is under way at
/// a time.
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

    /// Takes the default sink of the session manager's store, which was asked for instead of listened to.
    void setDefaultSinkName(std::optional<std::string> name);

    /// Has the server prove that it lives.
    void check() { requestSync(); }

    /// Whether the server tells the graphs' clocks.
    bool knowsClocks() const { return clocks_.isAbleTo(); }

    /// Samples for a while: a change may have moved the graphs' clocks.
    void sampleClocks() { clocks_.sample(); }

    /// Samples once, in case a clock has changed without a sign.
    void glanceAtClocks() { clocks_.glance(); }

  private:
    void global(std::uint32_t id, const char* type, std::uint32_t version, const spa_dict* properties);
    void globalRemoved(std::uint32_t id);
    void synced(int sequence);
    void failed(std::uint32_t id, int result);
    void stayedSilent();

    AudioGraph& mirror() override { return graph_; }
    pw_registry* registry() override { return registry_.get(); }
    void changed() override;
    std::uint64_t nextSync() const override { return syncsSent_ + 1; }

    void requestSync();
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
    std::uint64_t syncsSent_ = 0;
    int syncSequence_ = 0;
    bool isSyncDue_ = false;
    bool hasChanged_ = false;   // since the sync was asked for
    bool isUnsettled_ = false;  // something changed, and `settled` has not been called since
    bool hasAnswered_ = false;
    bool isSilent_ = false;
};

}  // namespace purlock::host_linux
