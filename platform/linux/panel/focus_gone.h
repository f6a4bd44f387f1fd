#pragma once

#include <chrono>
#include <functional>
#include <utility>

#include "base/cancellable.h"
#include "base/run_loop.h"

namespace purlock::host_linux {

/// When a focus that has gone elsewhere means that the user has turned away, where no press of a button can
/// be seen: on Wayland.
///
/// There, on many desktops, the focus follows the pointer, so that the way from the icon to the panel takes
/// it away. So it counts once the pointer has been in the panel and has stayed outside for a second, with the
/// focus elsewhere all that time. Pure but for the loop's delay; main thread.
class FocusGone {
  public:
    static constexpr std::chrono::seconds away{1};

    /// `onGone` may drop this.
    FocusGone(RunLoop& mainLoop, std::function<void()> onGone)
        : mainLoop_(mainLoop), onGone_(std::move(onGone)) {}
    FocusGone(const FocusGone&) = delete;
    FocusGone& operator=(const FocusGone&) = delete;

    void setFocused(bool focused) {
        isFocused_ = focused;
        decide();
    }
    void setPointerInside(bool inside) {
        wasInside_ = wasInside_ || inside;
        isInside_ = inside;
        decide();
    }

  private:
    void decide() {
        if (isFocused_ || isInside_ || !wasInside_) {
            waiting_.cancel();
            isWaiting_ = false;
            return;
        }
        if (std::exchange(isWaiting_, true)) return;
        waiting_ = mainLoop_.postDelayed(away, [this] {
            isWaiting_ = false;
            const auto onGone = onGone_;
            onGone();
        });
    }

    RunLoop& mainLoop_;
    const std::function<void()> onGone_;
    bool isFocused_ = true;
    bool isInside_ = false;
    bool wasInside_ = false;
    bool isWaiting_ = false;
    Cancellable waiting_;
};

}  // namespace purlock::host_linux
