#pragma once

#include <memory>
#include <string_view>

#include "source/now_playing_framework.h"

namespace purlock::host_macos {

/// Opens the system's private now-playing framework by its path; it is never linked. Main thread.
class MediaRemoteLoader final : public FrameworkLoader {
  public:
    std::shared_ptr<NowPlayingFramework> openNowPlayingFramework(std::string_view path) override;
};

}  // namespace purlock::host_macos
