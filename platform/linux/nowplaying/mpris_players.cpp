#include "platform/linux/nowplaying/mpris_players.h"

#include <algorithm>
#include <utility>

namespace purlock::host_linux {

namespace {

constexpr const char* playerPath = "/org/mpris/MediaPlayer2";
constexpr const char* rootInterface = "org.mpris.MediaPlayer2";
constexpr const char* playerInterface = "org.mpris.MediaPlayer2.Player";

constexpr const char* nameOwnerRule =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
    "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0namespace='org.mpris.MediaPlayer2'";
constexpr const char* propertiesRule =
    "type='signal',path='/org/mpris/MediaPlayer2',"
    "interface='org.freedesktop.DBus.Properties',member='PropertiesChanged',"
    "arg0='org.mpris.MediaPlayer2.Player'";
constexpr const char* seekedRule =
    "type='signal',path='/org/mpris/MediaPlayer2',interface='org.mpris.MediaPlayer2.Player',member='Seeked'";

/// Names beyond the roster's room are asked for, so that a player among them is not missed.
constexpr std::size_t maximumNames = 512;
constexpr std::chrono::milliseconds pauseBetweenLists{1000};

BusMethod propertiesMethod(const std::string& owner, const char* member) {
    return {owner, playerPath, propertiesInterface, member};
}

NowPlayingChanges operator|(const NowPlayingChanges& a, const NowPlayingChanges& b) {
    return {a.application || b.application, a.information || b.information, a.playing || b.playing};
}

}  // namespace

MprisPlayers::MprisPlayers(BusThread& thread, std::string address, ChangeCallback onChange,
                           CurrentCallback onCurrent)
    : onChange_(std::move(onChange)),
      onCurrent_(std::move(onCurrent)),
      tellLater_(thread),
      listLater_(thread),
      connection_(thread, std::move(address), {[this] { becomeConnected(); }, [this] { becomeLost(); }}) {}

// Coming and going of the bus and of players

void MprisPlayers::becomeConnected() {
    matches_.push_back(connection_.addMatch(
        nameOwnerRule, [this](const BusIncoming& signal) { onNameOwnerChanged(signal); }));
    matches_.push_back(connection_.addMatch(
        propertiesRule, [this](const BusIncoming& signal) { onPropertiesChanged(signal); }));
    matches_.push_back(
        connection_.addMatch(seekedRule, [this](const BusIncoming& signal) { onSeeked(signal); }));
    listNames();
}

void MprisPlayers::becomeLost() {
    matches_.clear();
    roster_.clear();
    rosterChanged();
}

void MprisPlayers::listNames() {
    // When it cannot be sent, the connection is about to be lost; it comes back with a new list.
    busCalls_.send(connection_.newCall(messageBusMethod("ListNames")), busTimeLimit,
                   [this](const BusIncoming& reply) {
                       BusReader reader = reply.reader();
                       if (reply.isError() || !reader.enterArray()) return;
                       std::size_t asked = 0;
                       while (const auto name = reader.next()) {
                           if (name->text() == nullptr || !name->text()->starts_with(playerNamePrefix)) {
                               continue;
                           }
                           if (++asked > maximumNames) break;
                           askForOwner(*name->text());
                       }
                   });
}

void MprisPlayers::listNamesSoon() {
    if (!listLater_.running()) listLater_.start(pauseBetweenLists, [this] { listNames(); });
}

/// The bus tells of owners in the order in which they change, so each answer is newer than what is known.
void MprisPlayers::askForOwner(const std::string& name) {
    BusCall call = connection_.newCall(messageBusMethod("GetNameOwner"));
    call.append(name);
    busCalls_.send(call, busTimeLimit, [this, name](const BusIncoming& reply) {
        if (!reply.isError()) takeOwner(name, reply.reader().nextText().value_or(""));
    });
}

void MprisPlayers::onNameOwnerChanged(const BusIncoming& signal) {
    if (signal.sender() != messageBusName) return;
    BusReader reader = signal.reader();
    const auto name = reader.nextText();
    reader.nextText();  // the former owner
    const auto owner = reader.nextText();
    if (name && owner) takeOwner(*name, *owner);
}

void MprisPlayers::takeOwner(const std::string& name, const std::string& owner) {
    const bool wasFull = roster_.isFull();
    if (roster_.setNameOwner(name, owner) == PlayerRoster::Arrival::added) {
        askForProcess(owner);
        askForIdentity(owner);
        askForProperties(owner);
    }
    if (wasFull && !roster_.isFull()) listNamesSoon();  // there is room for those that were refused
    rosterChanged();
}

// What a player is asked

void MprisPlayers::askForProcess(const std::string& owner) {
    BusCall call = connection_.newCall(messageBusMethod("GetConnectionUnixProcessID"));
    call.append(owner);
    busCalls_.send(call, busTimeLimit, [this, owner](const BusIncoming& reply) {
        const auto value = reply.isError() ? std::nullopt : reply.reader().next();
        const std::int64_t pid = value ? value->integer().value_or(0) : 0;
        if (std::in_range<std::int32_t>(pid)) {
            roster_.setProcessIdentifier(owner, static_cast<std::int32_t>(pid));
        }
        rosterChanged();
    });
}

void MprisPlayers::askForIdentity(const std::string& owner) {
    BusCall call = connection_.newCall(propertiesMethod(owner, "GetAll"));
    call.append(rootInterface);
    busCalls_.send(call, propertiesTimeLimit, [this, owner](const BusIncoming& reply) {
        if (const auto properties = valueOf(owner, reply)) {
            roster_.setIdentity(owner, identityFrom(*properties));
        }
        rosterChanged();
    });
}

void MprisPlayers::askForProperties(const std::string& owner) {
    Calls& calls = calls_[owner];
    if (calls.askingForProperties) {
        calls.askAgain = true;
        return;
    }
    BusCall call = connection_.newCall(propertiesMethod(owner, "GetAll"));
    call.append(playerInterface);
    calls.askAgain = false;
    calls.propertiesAsked = std::chrono::steady_clock::now();
    calls.askingForProperties = busCalls_.send(
        call, propertiesTimeLimit, [this, owner](const BusIncoming& reply) { takeProperties(owner, reply); });
}

void MprisPlayers::takeProperties(const std::string& owner, const BusIncoming& reply) {
    if (!roster_.contains(owner)) return;
    if (const auto properties = valueOf(owner, reply)) roster_.updateProperties(owner, *properties);
    if (reply.errorName() == "org.freedesktop.DBus.Error.NoReply") roster_.setSilent(owner, true);
    if (roster_.contains(owner)) {
        Calls& calls = calls_[owner];
        calls.askingForProperties = false;
        if (calls.askAgain) askForProperties(owner);
    }
    rosterChanged();
}

void MprisPlayers::onPropertiesChanged(const BusIncoming& signal) {
    const std::string owner(signal.sender());
    if (!roster_.contains(owner)) {
        if (roster_.isFull()) listNamesSoon();  // one that had no room may play now
        return;
    }
    BusReader reader = signal.reader(playerReadLimits);
    if (reader.nextText() != playerInterface) return;
    if (const auto changed = reader.next()) roster_.updateProperties(owner, *changed);
    const auto invalidated = reader.next();
    if (invalidated && invalidated->list() != nullptr && !invalidated->list()->empty()) {
        askForProperties(owner);
    }
    rosterChanged();
}

void MprisPlayers::onSeeked(const BusIncoming& signal) {
    const std::string owner(signal.sender());
    if (!roster_.contains(owner)) return;
    const auto position = signal.reader(playerReadLimits).next();
    roster_.setPosition(owner, position ? secondsFromMicroseconds(*position) : std::nullopt);
    roster_.setSilent(owner, false);
    if (roster_.currentOwner() == owner) untold_.information = true;
    rosterChanged();
}

void MprisPlayers::askForPosition(const std::string& owner) {
    BusCall call = connection_.newCall(propertiesMethod(owner, "Get"));
    call.append(playerInterface).append("Position");
    calls_[owner].askingForPosition =
        busCalls_.send(call, positionTimeLimit, [this, owner](const BusIncoming& reply) {
            if (!roster_.contains(owner)) return;
            calls_[owner].askingForPosition = false;
            const auto answer = valueOf(owner, reply);
            roster_.setPosition(owner, answer ? secondsFromMicroseconds(*answer) : std::nullopt);
            if (roster_.currentOwner() == owner) untold_.information = true;
            rosterChanged();
        });
}

// What a reader is told

void MprisPlayers::look() {
    const std::string current = roster_.currentOwner();
    const auto now = std::chrono::steady_clock::now();
    for (const std::string& owner : current.empty() ? roster_.owners() : std::vector{current}) {
        if (now - calls_[owner].propertiesAsked >= propertiesLifetime) askForProperties(owner);
    }
}

void MprisPlayers::noteInformation() {
    untold_.information = true;
    rosterChanged();
}

/// The position of the current player, where what is counted begins with a guess.
void MprisPlayers::askWhatIsMissing() {
    const std::string owner = roster_.currentOwner();
    const auto* player = roster_.find(owner);
    if (player == nullptr || !player->isPositionWanted || player->isSilent) return;
    const Calls& calls = calls_[owner];
    if (!calls.askingForPosition && !calls.askingForProperties) askForPosition(owner);
}

/// The answer of a player; absent when there was none. A player may have left without a signal: then it is
/// forgotten, and the bus is asked for its players again.
std::optional<BusValue> MprisPlayers::valueOf(const std::string& owner, const BusIncoming& reply) {
    if (!reply.isError()) return reply.reader(playerReadLimits).next();
    const bool hasLeft = reply.errorName() == "org.freedesktop.DBus.Error.ServiceUnknown" ||
                         reply.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner";
    if (hasLeft && reply.sender() == messageBusName) {
        roster_.removeOwner(owner);
        listNames();
    }
    return std::nullopt;
}

void MprisPlayers::tellCurrent() {
    std::optional<CurrentPlayer> current;
    if (const auto* player = roster_.find(roster_.currentOwner())) {
        current = CurrentPlayer{player->processIdentifier, player->identity, player->properties.track,
                                player->playbackRate(), player->clock};
    }
    if (current == told_) return;
    told_ = std::move(current);
    onCurrent_(told_);
}

void MprisPlayers::rosterChanged() {
    std::erase_if(calls_, [this](const auto& entry) { return !roster_.contains(entry.first); });
    askWhatIsMissing();
    tellCurrent();
    untold_ = untold_ | roster_.takeChanges();
    if (!untold_.any() || tellLater_.running()) return;
    const auto sinceLast = std::chrono::steady_clock::now() - lastTold_;
    if (sinceLast >= quietTime) {
        tellChanges();
    } else {
        tellLater_.start(std::chrono::ceil<std::chrono::milliseconds>(quietTime - sinceLast),
                         [this] { tellChanges(); });
    }
}

void MprisPlayers::tellChanges() {
    lastTold_ = std::chrono::steady_clock::now();
    onChange_(std::exchange(untold_, {}));
}

}  // namespace purlock::host_linux
