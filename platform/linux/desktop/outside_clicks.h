#pragma once

#include "base/run_loop.h"
#include "ui/window_seams.h"

namespace purlock::host_linux {

/// Clicks that go to other programs. No program on Linux sees those, but a click elsewhere gives another
/// window the focus: that is what is told, whichever button it was.
///
/// It is told a moment after the focus has gone, and not at all if it is back by then: a click on the status
/// item takes the focus away in some bars, and must find the panel as the user saw it. Owned by the host,
/// which outlives the tokens; main thread only.
class OutsideClicks final : public EventMonitor {
  public:
    explicit OutsideClicks(RunLoop& mainLoop) : mainLoop_(mainLoop) {}

    Cancellable addGlobalMonitor(Mask mask, std::function<void()> handler) override;

  private:
    RunLoop& mainLoop_;
};

}  // namespace purlock::host_linux
