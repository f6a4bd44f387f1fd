#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/nowplaying/player_roster.h"

namespace purlock::host_linux {

/// Follows the media players of a session bus by their signals (MPRIS 2.2). Lives on the bus thread.
///
/// Nothing is asked regularly: a player is asked for its properties when it appears or says that they are no
/// longer what it told, and for its position when someone reads. A player that does not answer costs a reader
/// `positionTimeLimit` once; from then on, until it answers again, its position is absent at once. Without a
/// bus there are no players.
///
/// A bus drops signals when its queue is full, and some players forget to send them: a reader's question asks
/// for all properties when those are older than `propertiesLifetime`, and a player that the bus no longer
/// knows is forgotten.
class MprisPlayers {
  public:
    /// Told what a reader could see differ, on the bus thread; no more often than every `quietTime`.
    using ChangeCallback = std::function<void(NowPlayingChanges)>;

    /// Told at once, on the bus thread, when there is another current player or none, or its process is
    /// known.
    using CurrentCallback = std::function<void(std::optional<std::int32_t> processIdentifier)>;

    /// The current player and its position; null when there is none. For the length of the callback.
    using ReadCallback =
        std::function<void(const PlayerRoster::Player* player, std::optional<double> positionSeconds)>;

    static constexpr std::chrono::milliseconds positionTimeLimit{500};
    static constexpr std::chrono::milliseconds propertiesTimeLimit{5000};
    static constexpr std::chrono::milliseconds quietTime{50};
    static constexpr std::chrono::seconds propertiesLifetime{10};

    MprisPlayers(BusThread& thread, std::string address, ChangeCallback onChange, CurrentCallback onCurrent);
    MprisPlayers(const MprisPlayers&) = delete;
    MprisPlayers& operator=(const MprisPlayers&) = delete;

    /// Calls back once, within `positionTimeLimit`, with the position as it is now; not after the end of this
    /// object.
    void readCurrent(const ReadCallback& onRead);

    /// The process of the current player's peer: absent when there is no player, 0 while it is not known. A
    /// sandboxed application's peer is the proxy of its sandbox, which carries the sandbox's own information
    /// and stands in its control group.
    std::optional<std::int32_t> currentProcessIdentifier() const;

  private:
    /// The calls to one player that are under way.
    struct Calls {
        bool askingForProperties = false;
        bool askAgain = false;
        int positions = 0;
        bool isSilent = false;  // the last question for its position had no answer
        std::chrono::steady_clock::time_point propertiesAsked{};
    };

    enum class Asked { position, everything };

    void becomeConnected();
    void becomeLost();
    void listNames();
    void askForOwner(const std::string& name);
    void takeOwner(const std::string& name, const std::string& owner);
    void askForProcess(const std::string& owner);
    void askForProperties(const std::string& owner);
    void takeProperties(const std::string& owner, const BusIncoming& reply);
    bool askForPosition(const std::string& owner, ReadCallback onRead);
    void takePosition(const std::string& owner, Asked asked, const BusIncoming& reply,
                      const ReadCallback& onRead);
    std::optional<BusValue> valueOf(const std::string& owner, const BusIncoming& reply);
    void onNameOwnerChanged(const BusIncoming& signal);
    void onPropertiesChanged(const BusIncoming& signal);
    void onSeeked(const BusIncoming& signal);
    void rosterChanged();
    void tellChanges();

    const ChangeCallback onChange_;
    const CurrentCallback onCurrent_;
    std::optional<std::int32_t> toldProcess_;
    PlayerRoster roster_;
    std::map<std::string, Calls> calls_;  // by unique name, of the roster's players
    NowPlayingChanges untold_;
    std::chrono::steady_clock::time_point lastTold_{};
    BusTimer tellLater_;
    std::vector<BusSlot> matches_;
    BusConnection connection_;  // last: its end, which comes first, is the end of every callback
};

}  // namespace purlock::host_linux
