#include "platform/linux/nowplaying/mpris_framework.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <utility>

#include "platform/linux/nowplaying/mpris_players.h"
#include "platform/linux/nowplaying/shared_player.h"
#include "platform/linux/playedfile/file_url.h"

namespace purlock::host_linux {

namespace {

constexpr std::string_view frameworkPath = "/System/Library/PrivateFrameworks/MediaRemote.framework";

void postChanges(MainNotificationCenter& center, const NowPlayingChanges& changes) {
    if (changes.information) center.post("kMRMediaRemoteNowPlayingInfoDidChangeNotification");
    if (changes.application) center.post("kMRMediaRemoteNowPlayingApplicationDidChangeNotification");
    if (changes.playing) center.post("kMRMediaRemoteNowPlayingApplicationIsPlayingDidChangeNotification");
}

}  // namespace

/// How other threads reach the service until the loader ends. It does not keep the service alive: what the
/// functions are asked to call back may be dropped on the bus thread, where the service must not end.
struct MprisFrameworkLoader::Shared {
    std::mutex mutex;
    Service* service = nullptr;  // guarded by mutex

    template <typename Work>
    void withService(Work work) {
        const std::lock_guard lock(mutex);
        if (service != nullptr) work(*service);
    }
};

/// The players, and whether anybody wants to hear of them.
class MprisFrameworkLoader::Service {
  public:
    Service(BusThread& thread, const std::string& address, MainNotificationCenter& center, PlayedFiles& files,
            std::shared_ptr<SharedPlayer> sharedPlayer, std::shared_ptr<Shared> shared)
        : files_(files),
          player_(std::move(sharedPlayer)),
          shared_(std::move(shared)),
          players_(thread, [this, &thread, &center, address] {
              return std::make_unique<MprisPlayers>(
                  thread, address,
                  [this, &center](const NowPlayingChanges& changes) {
                      if (isRegistered_) postChanges(center, changes);
                  },
                  [this](const std::optional<CurrentPlayer>& player) { take(player); });
          }) {}

    void registerForNotifications() { isRegistered_ = true; }

    void getInfo(const NowPlayingFramework::Queue& queue, NowPlayingFramework::InfoBlock block) {
        lookNowAndThen();
        queue->async([player = player_, block = std::move(block)] {
            const SharedPlayer::Reading reading = player->read(std::chrono::steady_clock::now());
            const auto outer = std::exchange(answered, reading.processIdentifier);
            block(reading.dictionary);
            answered = outer;
        });
    }

    void getPID(const NowPlayingFramework::Queue& queue, NowPlayingFramework::PIDBlock block) {
        const std::int32_t pid =
            answered ? *answered : player_->read(std::chrono::steady_clock::now()).processIdentifier;
        queue->async([block = std::move(block), pid] { block(std::max(pid, 0)); });
    }

  private:
    /// A reader wakes the bus thread only when a player is to be asked for what signals should have told.
    void lookNowAndThen() {
        using Clock = std::chrono::steady_clock;
        const auto now = Clock::now().time_since_epoch().count();
        const auto pause =
            std::chrono::duration_cast<Clock::duration>(MprisPlayers::propertiesLifetime).count();
        auto last = lastLook_.load();
        if (now - last < pause || !lastLook_.compare_exchange_strong(last, now)) return;
        players_.post([](MprisPlayers& players) { players.look(); });
    }

    /// On the bus thread.
    void take(const std::optional<CurrentPlayer>& player) {
        const auto address = player_->setPlayer(player);
        auto path = address ? localPathOf(*address) : std::nullopt;
        if (!path) return;
        files_.read(std::move(*path), [shared = shared_, address = *address](std::optional<PlayedFile> file) {
            shared->withService([&](Service& service) { service.takeFile(address, std::move(file)); });
        });
    }

    /// On the files' queue.
    void takeFile(const std::string& address, std::optional<PlayedFile> file) {
        if (!file || !player_->setFile(address, std::move(file))) return;
        players_.post([](MprisPlayers& players) { players.noteInformation(); });
    }

    /// The process of the dictionary that is being handed over on this thread.
    static thread_local std::optional<std::int32_t> answered;

    PlayedFiles& files_;
    const std::shared_ptr<SharedPlayer> player_;
    const std::shared_ptr<Shared> shared_;
    std::atomic<bool> isRegistered_ = false;
    std::atomic<std::chrono::steady_clock::rep> lastLook_ = 0;
    OnBusThread<MprisPlayers> players_;
};

thread_local std::optional<std::int32_t> MprisFrameworkLoader::Service::answered;

class MprisFrameworkLoader::Framework final : public NowPlayingFramework {
  public:
    explicit Framework(std::shared_ptr<Shared> shared) : shared_(std::move(shared)) {}

    GetInfoFunction getInfoFunctionForName(std::string_view name) override {
        if (name != "MRMediaRemoteGetNowPlayingInfo") return {};
        return [shared = shared_](const Queue& queue, const InfoBlock& block) {
            shared->withService([&](Service& service) { service.getInfo(queue, block); });
        };
    }

    RegisterFunction registerFunctionForName(std::string_view name) override {
        if (name != "MRMediaRemoteRegisterForNowPlayingNotifications") return {};
        return [shared = shared_](const Queue&) {
            shared->withService([](Service& service) { service.registerForNotifications(); });
        };
    }

    GetPIDFunction getPIDFunctionForName(std::string_view name) override {
        if (name != "MRMediaRemoteGetNowPlayingApplicationPID") return {};
        return [shared = shared_](const Queue& queue, const PIDBlock& block) {
            shared->withService([&](Service& service) { service.getPID(queue, block); });
        };
    }

  private:
    const std::shared_ptr<Shared> shared_;
};

MprisFrameworkLoader::MprisFrameworkLoader(BusThread& thread, std::string sessionBusAddress,
                                           MainNotificationCenter& center, PlayedFiles& files)
    : thread_(thread),
      address_(std::move(sessionBusAddress)),
      center_(center),
      files_(files),
      player_(std::make_shared<SharedPlayer>()),
      shared_(std::make_shared<Shared>()) {}

MprisFrameworkLoader::~MprisFrameworkLoader() {
    const std::lock_guard lock(shared_->mutex);
    shared_->service = nullptr;
}

std::optional<PlayerIdentity> MprisFrameworkLoader::identityOf(std::int32_t processIdentifier) const {
    return player_->identityOf(processIdentifier);
}

std::uint64_t MprisFrameworkLoader::changes() const {
    return player_->changes();
}

std::shared_ptr<NowPlayingFramework> MprisFrameworkLoader::openNowPlayingFramework(std::string_view path) {
    if (path != frameworkPath) return nullptr;
    if (!service_) {
        const std::lock_guard lock(shared_->mutex);  // a file may be read before the service is known
        service_ = std::make_unique<Service>(thread_, address_, center_, files_, player_, shared_);
        shared_->service = service_.get();
    }
    return std::make_shared<Framework>(shared_);
}

}  // namespace purlock::host_linux
