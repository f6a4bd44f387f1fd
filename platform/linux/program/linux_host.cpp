#include "platform/linux/program/linux_host.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <string>
#include <utility>

#include "audio/process_audio.h"
#include "platform/linux/dbus/bus_address.h"
#include "platform/linux/storage/json_user_defaults.h"
#include "platform/linux/system/directories.h"
#include "platform/linux/words/linux_words.h"

namespace purlock::host_linux {

namespace {

// As many as there are queues whose work may hang: the log's and the snapshot's disk.
constexpr std::size_t workerThreads = 2;
constexpr std::chrono::seconds longestWrite{2};  // at the end of the program

// As many as there are queues for files of other programs: preferences, played files, applications. The disk
// of any may hang without end, and the program ends all the same.
constexpr std::size_t foreignFileThreads = 3;
constexpr std::chrono::milliseconds longestFarewell{1000};

void nameWorkerThread() {
    pthread_setname_np(pthread_self(), "purlock-worker");
}

std::filesystem::path defaultsFile() {
    return configDirectory().value_or("/nonexistent") / "Purlock" / "defaults.json";
}

std::string queueLabel(const char* suffix) {
    return std::string(applicationIdentifier) + suffix;
}

}  // namespace

LinuxHost::LinuxHost(std::string sessionBus)
    : sessionBus_(std::move(sessionBus)),
      files_(dataDirectory()),
      queues_(workerThreads, nameWorkerThread),
      foreignFiles_(foreignFileThreads, nameWorkerThread),
      preferences_(foreignFiles_.makeSerialQueue(queueLabel(".purlock.preferences"))),
      notificationCenter_(mainLoop_),
      playedFiles_(foreignFiles_.makeSerialQueue(queueLabel(".purlock.playedfile"))),
      players_(busThread_, sessionBus_, notificationCenter_, playedFiles_),
      accessibility_(busThread_, sessionBus_, [this] { return soundRuns(); }),
      bluetooth_(busThread_, systemBusAddress()),
      applications_(foreignFiles_.makeSerialQueue(queueLabel(".purlock.applications"))),
      hardware_(applications_.searchingAtOnce()),
      statusBar_(mainLoop_, busThread_, sessionBus_, [this] { return panels_.bringToFront(); }) {
    if (busThread_.isLifeless()) {
        std::cerr << "The system gives no thread for D-Bus; players, badges and Bluetooth are not seen.\n";
    }
    followPlayers();
}

/// A badge changes with what plays; a position that jumps changes none.
void LinuxHost::followPlayers() {
    for (const char* name : {"kMRMediaRemoteNowPlayingInfoDidChangeNotification",
                             "kMRMediaRemoteNowPlayingApplicationDidChangeNotification",
                             "kMRMediaRemoteNowPlayingApplicationIsPlayingDidChangeNotification"}) {
        playerChanges_.push_back(notificationCenter_.addObserverForName(name, [this] {
            const std::uint64_t changes = players_.changes();
            if (std::exchange(notedChanges_, changes) != changes) accessibility_.noteChange();
        }));
    }
}

bool LinuxHost::soundRuns() {
    return std::ranges::any_of(ProcessAudio::audioProcesses(hardware_),
                               &ProcessAudio::RawProcess::isRunningOutput);
}

bool LinuxHost::finish() {
    const bool isWritten = queues_.finishWithin(longestWrite);
    foreignFiles_.finishWithin(longestFarewell);
    return isWritten;
}

void LinuxHost::provideSharedServices() {
    SettingsStore::shared.provide(
        [] { return std::make_shared<SettingsStore>(std::make_shared<JsonUserDefaults>(defaultsFile())); });
    StateLogger::shared.provide(
        [this] { return std::make_shared<StateLogger>(files_, queues_, clock_, SettingsStore::shared()); });
    StateSnapshot::shared.provide(
        [this] { return std::make_shared<StateSnapshot>(files_, queues_, clock_); });
}

void LinuxHost::listenToStarts(std::function<void()> onActivate) {
    activation_ = std::make_unique<InstanceActivation>(
        mainLoop_, busThread_, sessionBus_, std::move(onActivate), [this] { return panels_.isPanelOpen(); });
}

AppDelegateSeams LinuxHost::seams() {
    return {.mainLoop = mainLoop_,
            .audio = {hardware_, usb_, bluetooth_, operatingSystem_, mainLoop_, mainQueues_},
            .nowPlaying = {mainLoop_, mainQueues_, operatingSystem_, playerApplications_, players_,
                           notificationCenter_},
            .coordinator = {mainLoop_,
                            clock_,
                            {hardware_, playerApplications_, operatingSystem_},
                            {preferences_, preferences_, applications_, accessibility_},
                            linuxWords()},
            .windows = {application_, statusBar_, panels_, outsideClicks_, workspace_, accessibilityPrompt_,
                        &clipboard_}};
}

}  // namespace purlock::host_linux
