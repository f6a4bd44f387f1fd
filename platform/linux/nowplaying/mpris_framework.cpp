#include "platform/linux/nowplaying/mpris_framework.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <utility>

#include "platform/linux/nowplaying/mpris_players.h"

namespace purlock::host_linux {

namespace {

constexpr std::string_view frameworkPath = "/System/Library/PrivateFrameworks/MediaRemote.framework";

NowPlayingDictionary dictionaryOf(const PlayerRoster::Player* player, std::optional<double> positionSeconds) {
    NowPlayingDictionary dictionary;
    if (player == nullptr) return dictionary;
    const PlayerTrack& track = player->properties.track;
    const auto put = [&](const char* key, const auto& value) {
        if (value) dictionary.emplace(key, *value);
    };
    put("kMRMediaRemoteNowPlayingInfoTitle", track.title);
    put("kMRMediaRemoteNowPlayingInfoArtist", track.artist);
    put("kMRMediaRemoteNowPlayingInfoAlbum", track.album);
    put("kMRMediaRemoteNowPlayingInfoElapsedTime", positionSeconds);
    put("kMRMediaRemoteNowPlayingInfoDuration", track.durationSeconds);
    put("kMRMediaRemoteNowPlayingInfoPlaybackRate", std::optional(player->properties.playbackRate()));
    return dictionary;
}

void postChanges(MainNotificationCenter& center, const NowPlayingChanges& changes) {
    if (changes.information) center.post("kMRMediaRemoteNowPlayingInfoDidChangeNotification");
    if (changes.application) center.post("kMRMediaRemoteNowPlayingApplicationDidChangeNotification");
    if (changes.playing) center.post("kMRMediaRemoteNowPlayingApplicationIsPlayingDidChangeNotification");
}

}  // namespace

/// The players, and whether anybody wants to hear of them.
class MprisFrameworkLoader::Service {
  public:
    Service(BusThread& thread, const std::string& address, MainNotificationCenter& center)
        : players_(thread, [this, &thread, &center, address] {
              return std::make_unique<MprisPlayers>(
                  thread, address,
                  [this, &center](const NowPlayingChanges& changes) {
                      if (isRegistered_) postChanges(center, changes);
                  },
                  [this](std::optional<std::int32_t> process) { current_ = process.value_or(noPlayer); });
          }) {}

    void registerForNotifications() { isRegistered_ = true; }

    void getInfo(const NowPlayingFramework::Queue& queue, NowPlayingFramework::InfoBlock block) {
        if (current_ == noPlayer) {
            queue->async([block = std::move(block)] { block({}); });
            return;
        }
        players_.post([queue, block = std::move(block)](MprisPlayers& players) {
            players.readCurrent([queue, block](const auto* player, std::optional<double> position) {
                queue->async([block, dictionary = dictionaryOf(player, position)] { block(dictionary); });
            });
        });
    }

    void getPID(const NowPlayingFramework::Queue& queue, NowPlayingFramework::PIDBlock block) {
        queue->async([block = std::move(block), pid = std::max(current_.load(), 0)] { block(pid); });
    }

  private:
    static constexpr std::int32_t noPlayer = -1;

    std::atomic<bool> isRegistered_ = false;
    // The current player's process, mirrored here so that a fetch wakes the bus thread only when it has a
    // player to ask.
    std::atomic<std::int32_t> current_ = noPlayer;
    OnBusThread<MprisPlayers> players_;
};

/// How the functions reach the service, on whatever thread they are called, until the loader closes it. They
/// do not keep the service alive: what they are asked to call back may be dropped on the bus thread, where it
/// must not end.
struct MprisFrameworkLoader::Door {
    std::mutex mutex;
    Service* service = nullptr;  // guarded by mutex

    template <typename Work>
    void enter(Work work) {
        const std::lock_guard lock(mutex);
        if (service != nullptr) work(*service);
    }
};

class MprisFrameworkLoader::Framework final : public NowPlayingFramework {
  public:
    explicit Framework(std::shared_ptr<Door> door) : door_(std::move(door)) {}

    GetInfoFunction getInfoFunctionForName(std::string_view name) override {
        if (name != "MRMediaRemoteGetNowPlayingInfo") return {};
        return [door = door_](const Queue& queue, const InfoBlock& block) {
            door->enter([&](Service& service) { service.getInfo(queue, block); });
        };
    }

    RegisterFunction registerFunctionForName(std::string_view name) override {
        if (name != "MRMediaRemoteRegisterForNowPlayingNotifications") return {};
        return [door = door_](const Queue&) {
            door->enter([](Service& service) { service.registerForNotifications(); });
        };
    }

    GetPIDFunction getPIDFunctionForName(std::string_view name) override {
        if (name != "MRMediaRemoteGetNowPlayingApplicationPID") return {};
        return [door = door_](const Queue& queue, const PIDBlock& block) {
            door->enter([&](Service& service) { service.getPID(queue, block); });
        };
    }

  private:
    const std::shared_ptr<Door> door_;
};

MprisFrameworkLoader::MprisFrameworkLoader(BusThread& thread, std::string sessionBusAddress,
                                           MainNotificationCenter& center)
    : thread_(thread),
      address_(std::move(sessionBusAddress)),
      center_(center),
      door_(std::make_shared<Door>()) {}

MprisFrameworkLoader::~MprisFrameworkLoader() {
    const std::lock_guard lock(door_->mutex);
    door_->service = nullptr;
}

std::shared_ptr<NowPlayingFramework> MprisFrameworkLoader::openNowPlayingFramework(std::string_view path) {
    if (path != frameworkPath) return nullptr;
    if (!service_) {
        service_ = std::make_unique<Service>(thread_, address_, center_);
        const std::lock_guard lock(door_->mutex);
        door_->service = service_.get();
    }
    return std::make_shared<Framework>(door_);
}

}  // namespace purlock::host_linux
