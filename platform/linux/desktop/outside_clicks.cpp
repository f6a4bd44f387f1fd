#include "platform/linux/desktop/outside_clicks.h"

#include <QGuiApplication>
#include <QObject>
#include <chrono>
#include <memory>
#include <utility>

namespace purlock::host_linux {

namespace {

constexpr std::chrono::milliseconds grace{150};

/// Watches the focus for one token.
class FocusWatch final : public QObject {
  public:
    FocusWatch(RunLoop& mainLoop, std::function<void()> handler)
        : mainLoop_(mainLoop), handler_(std::move(handler)) {
        connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
                [this](Qt::ApplicationState state) { stateChanged(state); });
    }

  private:
    void stateChanged(Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive) {
            waiting_.cancel();
            return;
        }
        waiting_ = mainLoop_.postDelayed(grace, [this] {
            const auto handler = handler_;  // it may drop the token, and with it this
            handler();
        });
    }

    RunLoop& mainLoop_;
    const std::function<void()> handler_;
    Cancellable waiting_;
};

}  // namespace

Cancellable OutsideClicks::addGlobalMonitor(Mask /*mask*/, std::function<void()> handler) {
    return Cancellable(std::make_shared<FocusWatch>(mainLoop_, std::move(handler)));
}

}  // namespace purlock::host_linux
