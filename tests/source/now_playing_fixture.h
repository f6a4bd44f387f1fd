#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "source/now_playing_monitor.h"
#include "tests/support/fake_now_playing.h"
#include "tests/support/fake_operating_system.h"
#include "tests/support/fake_running_applications.h"
#include "tests/support/manual_queues.h"
#include "tests/support/manual_run_loop.h"
#include "tests/support/print_playback.h"

namespace purlock::test {

// The names, as the framework has them.

inline const std::string getInfoName = "MRMediaRemoteGetNowPlayingInfo";
inline const std::string registerName = "MRMediaRemoteRegisterForNowPlayingNotifications";
inline const std::string getPIDName = "MRMediaRemoteGetNowPlayingApplicationPID";

inline const std::string infoChanged = "kMRMediaRemoteNowPlayingInfoDidChangeNotification";
inline const std::string applicationChanged = "kMRMediaRemoteNowPlayingApplicationDidChangeNotification";
inline const std::string playingChanged = "kMRMediaRemoteNowPlayingApplicationIsPlayingDidChangeNotification";

inline const std::string titleKey = "kMRMediaRemoteNowPlayingInfoTitle";
inline const std::string artistKey = "kMRMediaRemoteNowPlayingInfoArtist";
inline const std::string albumKey = "kMRMediaRemoteNowPlayingInfoAlbum";
inline const std::string elapsedKey = "kMRMediaRemoteNowPlayingInfoElapsedTime";
inline const std::string durationKey = "kMRMediaRemoteNowPlayingInfoDuration";
inline const std::string rateKey = "kMRMediaRemoteNowPlayingInfoPlaybackRate";

/// A host with a complete framework, one running player (process 100), and everything under the test's
/// control.
struct NowPlayingFixture {
    static constexpr std::int32_t player = 100;

    explicit NowPlayingFixture(OperatingSystemVersion version = {15, 3, 0}) : operatingSystem(version) {
        applications.setRunning({{player, "com.example.player", "Player"}});
        loader.provide(framework);
    }

    /// What a test leaves queued holds the queue itself.
    ~NowPlayingFixture() { settle(); }
    NowPlayingFixture(const NowPlayingFixture&) = delete;
    NowPlayingFixture& operator=(const NowPlayingFixture&) = delete;

    std::shared_ptr<NowPlayingMonitor> makeMonitor() {
        return std::make_shared<NowPlayingMonitor>(
            NowPlayingSeams{loop, queues, operatingSystem, applications, loader, center});
    }

    /// Lets everything that is queued run, in either place, until nothing is left.
    void settle() {
        while (queues.run() + loop.runPosted() > 0) {
        }
    }

    ManualRunLoop loop;
    ManualQueues queues;
    FakeOperatingSystem operatingSystem;
    FakeRunningApplications applications;
    FakeFrameworkLoader loader;
    FakeNotificationCenter center{loop};
    std::shared_ptr<FakeNowPlayingFramework> framework = std::make_shared<FakeNowPlayingFramework>();
};

}  // namespace purlock::test
