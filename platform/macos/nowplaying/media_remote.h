#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>

#include "source/now_playing_framework.h"

namespace purlock::host_macos {

/// Opens the system's private now-playing framework by its path; it is never linked. Main thread.
///
/// While `mostQuestions` about what plays wait for an answer, no more is asked, until the last one is as old
/// as `patience`.
class MediaRemoteLoader final : public FrameworkLoader {
  public:
    static constexpr int mostQuestions = 8;
    static constexpr std::chrono::seconds patience{60};
    using Now = std::function<std::chrono::steady_clock::time_point()>;

    explicit MediaRemoteLoader(Now now = std::chrono::steady_clock::now) : now_(std::move(now)) {}

    std::shared_ptr<NowPlayingFramework> openNowPlayingFramework(std::string_view path) override;

  private:
    const Now now_;
};

}  // namespace purlock::host_macos
