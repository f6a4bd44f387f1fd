#include "platform/linux/nowplaying/player_applications.h"

#include "platform/linux/applications/desktop_applications.h"

namespace purlock::host_linux {

std::optional<RunningApplication> PlayerApplications::runningApplicationWithProcessIdentifier(
    std::int32_t pid) {
    auto application = desktop_.runningApplicationWithProcessIdentifier(pid);
    if (application && application->localizedName) return application;
    const auto identity = players_.identityOf(pid);
    if (!identity) return application;
    auto name = identity->desktopID ? desktop_.nameOfDesktopFile(*identity->desktopID) : std::nullopt;
    if (!name) name = identity->name;
    if (!name) return application;
    if (!application) application = RunningApplication{pid, std::nullopt, std::nullopt};
    application->localizedName = std::move(name);
    return application;
}

std::vector<RunningApplication> PlayerApplications::runningApplicationsWithBundleIdentifier(
    std::string_view bundleID) {
    return desktop_.runningApplicationsWithBundleIdentifier(bundleID);
}

}  // namespace purlock::host_linux
