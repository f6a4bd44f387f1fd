#include "platform/linux/nowplaying/player_roster.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

namespace purlock::host_linux {

namespace {

/// The first part of a player's own name, behind the prefix, up to the first dot.
constexpr std::array<std::string_view, 3> proxyingPlayers = {
    "playerctld",                  // repeats the players of this session
    "plasma-browser-integration",  // repeats those of the browser
    "kdeconnect",                  // "kdeconnect.mpris_000001": players of a paired phone
};

/// Players in the order of their claim to be the current one.
auto claim(const PlayerRoster::Player& player) {
    const std::uint64_t started = player.isPlaying() ? player.startedPlaying : 0;
    // An earlier arrival wins: nothing that merely appears takes the place of a player that was there.
    return std::tuple(player.properties.hasSomething(), started, player.changed, ~player.arrived);
}

}  // namespace

bool isProxyingPlayer(std::string_view name) {
    if (!name.starts_with(playerNamePrefix)) return false;
    name.remove_prefix(playerNamePrefix.size());
    return std::ranges::find(proxyingPlayers, name.substr(0, name.find('.'))) != proxyingPlayers.end();
}

PlayerRoster::Arrival PlayerRoster::setNameOwner(const std::string& name, const std::string& owner) {
    if (!name.starts_with(playerNamePrefix) || isProxyingPlayer(name)) return Arrival::refused;
    const auto known = players_.find(owner);
    if (known != players_.end() && known->second.names.contains(name)) return Arrival::known;
    removeName(name);
    if (owner.empty()) return Arrival::refused;
    if (known == players_.end() && isFull() && !makeRoom()) return Arrival::refused;
    const auto [entry, added] = players_.try_emplace(owner);
    if (added) entry->second.arrived = ++now_;
    if (entry->second.names.size() < maximumPlayers) entry->second.names.insert(name);
    return added ? Arrival::added : Arrival::known;
}

/// One that is merely open goes, else one that does not play; of several the one that has said nothing for
/// longest.
bool PlayerRoster::makeRoom() {
    const auto least = std::ranges::min_element(players_, {}, [](const auto& entry) {
        const Player& player = entry.second;
        return std::tuple(player.properties.hasSomething(), player.isPlaying(), player.changed,
                          player.arrived);
    });
    if (least == players_.end() || least->second.isPlaying()) return false;
    players_.erase(least);
    return true;
}

/// A player without a name has left.
void PlayerRoster::removeName(const std::string& name) {
    for (auto& [owner, player] : players_) player.names.erase(name);
    std::erase_if(players_, [](const auto& entry) { return entry.second.names.empty(); });
}

void PlayerRoster::setProcessIdentifier(const std::string& owner, std::int32_t pid) {
    const auto entry = players_.find(owner);
    if (entry != players_.end()) entry->second.processIdentifier = pid;
}

void PlayerRoster::setIdentity(const std::string& owner, PlayerIdentity identity) {
    const auto entry = players_.find(owner);
    if (entry != players_.end()) entry->second.identity = std::move(identity);
}

void PlayerRoster::updateProperties(const std::string& owner, const BusValue& changed, Moment now) {
    const auto entry = players_.find(owner);
    if (entry == players_.end()) return;
    Player& player = entry->second;
    const PlayerProperties before = player.properties;
    update(player.properties, changed);
    player.isSilent = false;
    player.clock.setRate(player.playbackRate(), now);
    if (const BusValue* position = changed.find("Position")) {
        setPosition(owner, secondsFromMicroseconds(*position), now);
    } else if (player.properties != before) {
        player.isPositionWanted = true;
        if (player.properties.track != before.track) player.clock.setPosition(std::nullopt, now);
    }
    if (player.properties == before) return;
    player.changed = ++now_;
    if (player.properties.isPlaying && !before.isPlaying) player.startedPlaying = now_;
}

void PlayerRoster::setPosition(const std::string& owner, std::optional<double> seconds, Moment now) {
    const auto entry = players_.find(owner);
    if (entry == players_.end()) return;
    entry->second.clock.setPosition(seconds, now);
    entry->second.isPositionWanted = false;
}

void PlayerRoster::setSilent(const std::string& owner, bool isSilent, Moment now) {
    const auto entry = players_.find(owner);
    if (entry == players_.end() || entry->second.isSilent == isSilent) return;
    entry->second.isSilent = isSilent;
    entry->second.clock.setRate(entry->second.playbackRate(), now);
}

std::vector<std::string> PlayerRoster::owners() const {
    std::vector<std::string> owners;
    for (const auto& [owner, player] : players_) owners.push_back(owner);
    return owners;
}

std::string PlayerRoster::currentOwner() const {
    const auto current =
        std::ranges::max_element(players_, {}, [](const auto& entry) { return claim(entry.second); });
    const bool isThere = current != players_.end() && current->second.properties.hasSomething();
    return isThere ? current->first : std::string();
}

const PlayerRoster::Player* PlayerRoster::find(const std::string& owner) const {
    const auto entry = players_.find(owner);
    return entry == players_.end() ? nullptr : &entry->second;
}

PlayerRoster::Current PlayerRoster::current() const {
    std::string owner = currentOwner();
    const Player* player = find(owner);
    if (player == nullptr) return {};
    return {std::move(owner), player->processIdentifier, player->identity, player->properties.track,
            player->playbackRate()};
}

NowPlayingChanges PlayerRoster::takeChanges() {
    Current now = current();
    NowPlayingChanges changes;
    changes.application = now.owner != seen_.owner || now.processIdentifier != seen_.processIdentifier ||
                          now.identity != seen_.identity;
    changes.information = now.track != seen_.track;
    changes.playing = now.playbackRate != seen_.playbackRate;
    seen_ = std::move(now);
    return changes;
}

}  // namespace purlock::host_linux
