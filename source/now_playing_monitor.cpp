#include "source/now_playing_monitor.h"

#include <array>
#include <string_view>
#include <utility>
#include <variant>

#include "source/played_file.h"

namespace purlock {

namespace {

constexpr OperatingSystemVersion firstUnsupportedVersion{15, 4, 0};
constexpr std::string_view frameworkPath = "/System/Library/PrivateFrameworks/MediaRemote.framework";

constexpr std::string_view getInfoName = "MRMediaRemoteGetNowPlayingInfo";
constexpr std::string_view registerName = "MRMediaRemoteRegisterForNowPlayingNotifications";
constexpr std::string_view getPIDName = "MRMediaRemoteGetNowPlayingApplicationPID";

constexpr std::array<std::string_view, 3> notificationNames = {
    "kMRMediaRemoteNowPlayingInfoDidChangeNotification",
    "kMRMediaRemoteNowPlayingApplicationDidChangeNotification",
    "kMRMediaRemoteNowPlayingApplicationIsPlayingDidChangeNotification",
};

/// Below or at this rate a player is taken as paused.
constexpr double pausedRate = 0.001;

/// The value of `key` if it is of this type.
template <typename Type>
std::optional<Type> valueOf(const NowPlayingDictionary& dictionary, std::string_view key) {
    const auto entry = dictionary.find(key);
    const auto* value = entry == dictionary.end() ? nullptr : std::get_if<Type>(&entry->second);
    return value == nullptr ? std::nullopt : std::optional(*value);
}

/// An empty text counts as none.
std::optional<std::string> textOf(const NowPlayingDictionary& dictionary, std::string_view key) {
    auto text = valueOf<std::string>(dictionary, key);
    return text && text->empty() ? std::nullopt : text;
}

/// All that the dictionary tells; the application is not in it.
NowPlayingInfo infoFrom(const NowPlayingDictionary& dictionary) {
    NowPlayingInfo info;
    info.title = textOf(dictionary, "kMRMediaRemoteNowPlayingInfoTitle");
    info.artist = textOf(dictionary, "kMRMediaRemoteNowPlayingInfoArtist");
    info.album = textOf(dictionary, "kMRMediaRemoteNowPlayingInfoAlbum");
    info.isPlaying =
        valueOf<double>(dictionary, "kMRMediaRemoteNowPlayingInfoPlaybackRate").value_or(0) > pausedRate;
    info.elapsedSeconds = valueOf<double>(dictionary, "kMRMediaRemoteNowPlayingInfoElapsedTime");
    info.durationSeconds = valueOf<double>(dictionary, "kMRMediaRemoteNowPlayingInfoDuration");
    info.playedFile = playedFileOf(dictionary);
    return info;
}

}  // namespace

/// The way of one answer from the framework to the main thread. Never changed once made, so that it may run
/// on the work queue; it holds the monitor weakly and locks it on the main thread only, where alone the
/// monitor may end.
struct NowPlayingMonitor::Reader : std::enable_shared_from_this<Reader> {
    using Monitor = std::weak_ptr<NowPlayingMonitor>;

    Reader(const NowPlayingSeams& seams, std::shared_ptr<SerialQueue> queue)
        : runLoop(seams.runLoop), applications(seams.applications), workQueue(std::move(queue)) {}

    RunLoop& runLoop;
    RunningApplications& applications;
    const std::shared_ptr<SerialQueue> workQueue;
    NowPlayingFramework::GetPIDFunction getPID;

    void handle(const Monitor& monitor, const NowPlayingDictionary& dictionary) const {
        if (monitor.expired()) return;
        const NowPlayingInfo info = infoFrom(dictionary);
        if (!getPID) {
            publish(monitor, info);
            return;
        }
        getPID(workQueue, [self = shared_from_this(), monitor, info](std::int32_t pid) {
            self->runLoop.post([self, monitor, info, pid] { self->addApplication(monitor, info, pid); });
        });
    }

    void addApplication(const Monitor& monitor, NowPlayingInfo info, std::int32_t pid) const {
        if (monitor.expired()) return;
        const auto application =
            pid >= 1 ? applications.runningApplicationWithProcessIdentifier(pid) : std::nullopt;
        if (application) {
            info.appBundleID = application->bundleIdentifier;
            info.appName = application->localizedName;
        }
        publish(monitor, info);
    }

    void publish(const Monitor& monitor, const NowPlayingInfo& info) const {
        runLoop.post([monitor, info] {
            if (const auto self = monitor.lock()) self->publish(info);
        });
    }
};

NowPlayingMonitor::NowPlayingMonitor(const NowPlayingSeams& seams)
    : notificationCenter_(seams.notificationCenter),
      workQueue_(seams.queues.makeSerialQueue(std::string(applicationIdentifier) + ".purlock.nowplaying")),
      reader_(std::make_shared<Reader>(seams, workQueue_)) {
    loadFramework(seams);
}

void NowPlayingMonitor::loadFramework(const NowPlayingSeams& seams) {
    if (seams.operatingSystem.version() >= firstUnsupportedVersion) {
        unavailableReason_.set("Now Playing requires v1.6 on macOS 15.4+");
        return;
    }
    const auto framework = seams.frameworks.openNowPlayingFramework(frameworkPath);
    if (!framework) {
        unavailableReason_.set("Could not open MediaRemote framework");
        return;
    }
    getInfo_ = framework->getInfoFunctionForName(getInfoName);
    if (!getInfo_) {
        unavailableReason_.set("MRMediaRemoteGetNowPlayingInfo missing");
        return;
    }
    register_ = framework->registerFunctionForName(registerName);
    reader_->getPID = framework->getPIDFunctionForName(getPIDName);
}

void NowPlayingMonitor::start() {
    if (!register_) return;
    register_(workQueue_);
    for (const std::string_view name : notificationNames) {
        observers_.push_back(notificationCenter_.addObserverForName(name, [monitor = weak_from_this()] {
            if (const auto self = monitor.lock()) self->refresh();
        }));
    }
    refresh();
}

void NowPlayingMonitor::refresh() {
    if (!getInfo_) return;
    getInfo_(workQueue_,
             [reader = reader_, monitor = weak_from_this()](const NowPlayingDictionary& dictionary) {
                 reader->handle(monitor, dictionary);
             });
}

void NowPlayingMonitor::publish(const NowPlayingInfo& info) {
    // An album or a playing state alone is nothing playing.
    if (!info.title && !info.artist && !info.appBundleID) {
        current_.set(std::nullopt);
    } else {
        current_.set(info);
    }
}

}  // namespace purlock
