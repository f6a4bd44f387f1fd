#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/dbus/bus_calls.h"
#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/nowplaying/player_roster.h"

namespace purlock::host_linux {

/// The current player as it was at one moment.
struct CurrentPlayer {
    std::int32_t processIdentifier = 0;  // 0 while it is not known
    PlayerIdentity identity;
    PlayerTrack track;
    double playbackRate = 0;
    PlaybackClock clock;

    bool operator==(const CurrentPlayer&) const = default;
};

/// Follows the media players of a session bus by their signals (MPRIS 2.2). Lives on the bus thread.
///
/// A player is asked for its properties when it appears or says that they are no longer what it told, and for
/// its position when its track or its state has changed; in between the position is counted. So a reader
/// never waits for a player. Without a bus there are no players.
///
/// A bus drops signals when its queue is full, and some players forget to send them: so readers call `look`,
/// which asks the current player for all of its properties when those are older than `propertiesLifetime`. A
/// player that does not answer counts as silent, which is not playing, until it is heard again; one that the
/// bus no longer knows is forgotten.
class MprisPlayers {
  public:
    /// Told what a reader could see differ, on the bus thread; no more often than every `quietTime`.
    using ChangeCallback = std::function<void(NowPlayingChanges)>;

    /// Told at once, on the bus thread, when the current player is another one, none, or has changed.
    using CurrentCallback = std::function<void(const std::optional<CurrentPlayer>&)>;

    static constexpr std::chrono::milliseconds positionTimeLimit{500};
    static constexpr std::chrono::milliseconds propertiesTimeLimit{5000};
    static constexpr std::chrono::milliseconds quietTime{50};
    static constexpr std::chrono::seconds propertiesLifetime{10};

    MprisPlayers(BusThread& thread, std::string address, ChangeCallback onChange, CurrentCallback onCurrent);
    MprisPlayers(const MprisPlayers&) = delete;
    MprisPlayers& operator=(const MprisPlayers&) = delete;

    /// Asks anew what was asked too long ago: the current player, or all of them while there is none.
    void look();

    /// Has `onChange` told, soon, that the information differs: what stands beside it has become known.
    void noteInformation();

  private:
    /// The calls to one player that are under way.
    struct Calls {
        bool askingForProperties = false;
        bool askAgain = false;
        bool askingForPosition = false;
        std::chrono::steady_clock::time_point propertiesAsked{};
    };

    void becomeConnected();
    void becomeLost();
    void listNames();
    void askForOwner(const std::string& name);
    void takeOwner(const std::string& name, const std::string& owner);
    void askForProcess(const std::string& owner);
    void askForProperties(const std::string& owner);
    void takeProperties(const std::string& owner, const BusIncoming& reply);
    void askForIdentity(const std::string& owner);
    void askForPosition(const std::string& owner);
    void askWhatIsMissing();
    std::optional<BusValue> valueOf(const std::string& owner, const BusIncoming& reply);
    void onNameOwnerChanged(const BusIncoming& signal);
    void onPropertiesChanged(const BusIncoming& signal);
    void onSeeked(const BusIncoming& signal);
    void rosterChanged();
    void tellCurrent();
    void listNamesSoon();
    void tellChanges();

    const ChangeCallback onChange_;
    const CurrentCallback onCurrent_;
    std::optional<CurrentPlayer> told_;
    PlayerRoster roster_;
    std::map<std::string, Calls> calls_;  // by unique name, of the roster's players
    NowPlayingChanges untold_;
    std::chrono::steady_clock::time_point lastTold_{};
    BusTimer tellLater_;
    BusTimer listLater_;
    std::vector<BusSlot> matches_;
    BusConnection connection_;
    BusCalls busCalls_{
        connection_};  // the last two: their end, which comes first, is the end of every callback
};

}  // namespace purlock::host_linux
