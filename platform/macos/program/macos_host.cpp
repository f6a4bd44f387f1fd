#include "platform/macos/program/macos_host.h"

#include <string>

#include "platform/macos/storage/standard_user_defaults.h"

namespace purlock::host_macos {

MacHost::MacHost()
    : activity_("Watching the audio output"),
      preferences_(queues_.makeSerialQueue(std::string(applicationIdentifier) + ".purlock.preferences")) {}

void MacHost::provideSharedServices() {
    SettingsStore::shared.provide(
        [] { return std::make_shared<SettingsStore>(std::make_shared<StandardUserDefaults>()); });
    StateLogger::shared.provide(
        [this] { return std::make_shared<StateLogger>(files_, queues_, clock_, SettingsStore::shared()); });
    StateSnapshot::shared.provide(
        [this] { return std::make_shared<StateSnapshot>(files_, queues_, clock_); });
}

AppDelegateSeams MacHost::seams() {
    return {
        .mainLoop = mainLoop_,
        .audio = {hardware_, usb_, bluetooth_, operatingSystem_, mainLoop_, queues_},
        .nowPlaying = {mainLoop_, queues_, operatingSystem_, applications_, frameworks_, notificationCenter_},
        .coordinator = {mainLoop_,
                        clock_,
                        {hardware_, applications_, operatingSystem_},
                        {preferences_, preferences_, applications_, accessibility_}},
        .windows = {application_, statusBar_, panels_, events_, workspace_, accessibilityPrompt_}};
}

}  // namespace purlock::host_macos
