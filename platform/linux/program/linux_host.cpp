#include "platform/linux/program/linux_host.h"

#include <pthread.h>

#include <string>
#include <utility>

#include "platform/linux/dbus/bus_address.h"
#include "platform/linux/storage/json_user_defaults.h"
#include "platform/linux/system/directories.h"

namespace purlock::host_linux {

namespace {

// As many as there are queues whose work may hang: the log's and the snapshot's disk, the monitors'
// notifications.
constexpr std::size_t workerThreads = 4;

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
      notificationCenter_(mainLoop_),
      players_(busThread_, sessionBus_, notificationCenter_),
      accessibility_(busThread_, sessionBus_),
      bluetooth_(busThread_, systemBusAddress()),
      applications_(queues_.makeSerialQueue(queueLabel(".purlock.applications"))),
      hardware_(applications_),
      statusBar_(mainLoop_, busThread_, sessionBus_, [this] { return panels_.bringToFront(); }) {}

LinuxHost::~LinuxHost() {
    // A refresh that is under way on a queue still asks the services.
    queues_.finish();
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
            .audio = {hardware_, usb_, bluetooth_, applications_, operatingSystem_, mainLoop_, queues_},
            .nowPlaying = {mainLoop_, mainQueues_, operatingSystem_, applications_, players_,
                           notificationCenter_},
            .coordinator = {mainLoop_,
                            clock_,
                            {hardware_, applications_, operatingSystem_},
                            {fileSystem_, propertyLists_, applications_, accessibility_}},
            .windows = {application_, statusBar_, panels_, outsideClicks_, workspace_, accessibilityPrompt_}};
}

}  // namespace purlock::host_linux
