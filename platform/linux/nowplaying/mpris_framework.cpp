#include "platform/linux/nowplaying/mpris_framework.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <utility>

#include "platform/linux/nowplaying/mpris_players.h"
#include "platform/linux/nowplaying/now_playing_shelf.h"
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

/// The players, and whether anybody wants to hear of them.
class MprisFrameworkLoader::Service {
  public:
    Service(BusThread& thread, const std::string& address, MainNotificationCenter& center, PlayedFiles& files,
            std::shared_ptr<NowPlayingShelf> shelf)
        : files_(files), shelf_(std::move(shelf)), players_(thread, [this, &thread, &center, address] {
              return std::make_unique<MprisPlayers>(
                  thread, address,
                  [this, &center](const NowPlayingChanges& changes) {
                      if (isRegistered_) postChanges(center, changes);
                  },
                  [this](const std::optional<CurrentPlayer>& player) { take(player); });
          }) {}

    ~Service() {
        const std::lock_guard lock(self_->mutex);
        self_->service = nullptr;
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    void registerForNotifications() { isRegistered_ = true; }

    void getInfo(const NowPlayingFramework::Queue& queue, NowPlayingFramework::InfoBlock block) {
        lookNowAndThen();
        queue->async([shelf = shelf_, block = std::move(block)] {
            const NowPlayingShelf::Reading reading = shelf->read(std::chrono::steady_clock::now());
            const auto outer = std::exchange(answered, reading.processIdentifier);
            block(reading.dictionary);
            answered = outer;
        });
    }

    void getPID(const NowPlayingFramework::Queue& queue, NowPlayingFramework::PIDBlock block) {
        const std::int32_t pid =
            answered ? *answered : shelf_->read(std::chrono::steady_clock::now()).processIdentifier;
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
        const auto address = shelf_->setPlayer(player);
        auto path = address ? localPathOf(*address) : std::nullopt;
        if (!path) return;
        files_.read(std::move(*path), [self = self_, address = *address](std::optional<PlayedFile> file) {
            const std::lock_guard lock(self->mutex);
            if (self->service != nullptr) self->service->takeFile(address, std::move(file));
        });
    }

    /// On the files' queue.
    void takeFile(const std::string& address, std::optional<PlayedFile> file) {
        if (!file || !shelf_->setFile(address, std::move(file))) return;
        players_.post([](MprisPlayers& players) { players.noteInformation(); });
    }

    /// The process of the dictionary that is being handed over on this thread.
    static thread_local std::optional<std::int32_t> answered;

    /// How a file that was read finds the service, if it is still there.
    struct Self {
        std::mutex mutex;
        Service* service;  // guarded by mutex
    };

    PlayedFiles& files_;
    const std::shared_ptr<NowPlayingShelf> shelf_;
    const std::shared_ptr<Self> self_{new Self{{}, this}};
    std::atomic<bool> isRegistered_ = false;
    std::atomic<std::chrono::steady_clock::rep> lastLook_ = 0;
    OnBusThread<MprisPlayers> players_;
};

thread_local std::optional<std::int32_t> MprisFrameworkLoader::Service::answered;

/// How the functions reach the service until the loader closes it. They may be called on any thread. They do
/// not keep the service alive: what they are asked to call back may be dropped on the bus thread, where it
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
                                           MainNotificationCenter& center, PlayedFiles& files)
    : thread_(thread),
      address_(std::move(sessionBusAddress)),
      center_(center),
      files_(files),
      shelf_(std::make_shared<NowPlayingShelf>()),
      door_(std::make_shared<Door>()) {}

MprisFrameworkLoader::~MprisFrameworkLoader() {
    const std::lock_guard lock(door_->mutex);
    door_->service = nullptr;
}

std::optional<PlayerIdentity> MprisFrameworkLoader::identityOf(std::int32_t processIdentifier) const {
    return shelf_->identityOf(processIdentifier);
}

std::uint64_t MprisFrameworkLoader::changes() const {
    return shelf_->changes();
}

std::shared_ptr<NowPlayingFramework> MprisFrameworkLoader::openNowPlayingFramework(std::string_view path) {
    if (path != frameworkPath) return nullptr;
    if (!service_) {
        service_ = std::make_unique<Service>(thread_, address_, center_, files_, shelf_);
        const std::lock_guard lock(door_->mutex);
        door_->service = service_.get();
    }
    return std::make_shared<Framework>(door_);
}

}  // namespace purlock::host_linux
