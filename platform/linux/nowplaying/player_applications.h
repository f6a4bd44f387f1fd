#pragma once

#include "base/running_applications.h"
#include "platform/linux/nowplaying/mpris_framework.h"

namespace purlock::host_linux {

class DesktopApplications;

/// The desktop's applications, and where the desktop knows none, what the player in that process calls
/// itself: the name in the desktop file that it names, else its own name for itself.
///
/// A player may claim any name, so a claim is only ever a name: it makes no program one of the known
/// services. Owned by the host; any thread.
class PlayerApplications final : public RunningApplications {
  public:
    PlayerApplications(DesktopApplications& desktop, const MprisFrameworkLoader& players)
        : desktop_(desktop), players_(players) {}

    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) override;
    std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(
        std::string_view bundleID) override;

  private:
    DesktopApplications& desktop_;
    const MprisFrameworkLoader& players_;
};

}  // namespace purlock::host_linux
