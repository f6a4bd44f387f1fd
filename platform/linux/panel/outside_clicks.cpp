#include "platform/linux/panel/outside_clicks.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QObject>
#include <QWidget>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>

#include "platform/linux/panel/focus_gone.h"
#include "platform/linux/panel/x_button_presses.h"
#include "platform/linux/panel/x_connection.h"

namespace purlock::host_linux {

namespace {

// The time that a tray needs to tell of a click on the icon after the button was let go.
constexpr std::chrono::milliseconds traysTurn{250};

// The press that closes a menu is heard of on two connections, in either order.
constexpr qint64 samePress = 100;  // milliseconds

constexpr int leftButton = 1;
constexpr int rightButton = 3;

bool isWanted(EventMonitor::Mask mask, int button) {
    return (button == leftButton && (mask & EventMonitor::leftMouseDown) != 0) ||
           (button == rightButton && (mask & EventMonitor::rightMouseDown) != 0);
}

bool isActive() {
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

/// True if presses exist that X does not tell of.
bool hidesPresses() {
    return toolkitConnection() == nullptr || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// The state of one token. The handler may drop it.
class ClickWatch final : public QObject {
  public:
    ClickWatch(RunLoop& mainLoop, OutsideClicks::IconQuestion iconAt, EventMonitor::Mask mask,
               std::function<void()> handler)
        : mainLoop_(mainLoop), iconAt_(std::move(iconAt)), mask_(mask), handler_(std::move(handler)) {
        if (toolkitConnection() != nullptr) {
            presses_ = std::make_unique<XButtonPresses>(
                ButtonEvents{[this](const ButtonPress& press) { pressed(press); },
                             [this](int button) { released(button); }});
        }
        if (hidesPresses() || !presses_->works()) watchFocus();
        qGuiApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        const QEvent::Type type = event->type();
        if (type == QEvent::Hide && isMenu(watched)) sinceMenu_.start();
        if ((type == QEvent::Enter || type == QEvent::Leave) && focusGone_ && watched->isWindowType()) {
            focusGone_->setFocused(isActive());
            focusGone_->setPointerInside(type == QEvent::Enter);
        }
        return false;
    }

  private:
    static bool isMenu(QObject* object) {
        const auto* widget = qobject_cast<QWidget*>(object);
        return widget != nullptr && widget->windowType() == Qt::Popup;
    }

    void watchFocus() {
        focusGone_.emplace(mainLoop_, [this] { tell(); });
        connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
            focusGone_->setFocused(state == Qt::ApplicationActive);
        });
    }

    void pressed(const ButtonPress& press) {
        const bool closesMenu = QApplication::activePopupWidget() != nullptr ||
                                (sinceMenu_.isValid() && sinceMenu_.elapsed() < samePress);
        if (!isWanted(mask_, press.button) || press.onOwnWindow || closesMenu) return;
        switch (iconAt_(press.x, press.y)) {
            case IconAt::no:
                tellIn(std::chrono::milliseconds(0));  // not from within the connection that this ends
                break;
            case IconAt::maybe:
                onRelease_ = press.button;
                break;
            case IconAt::yes:
                break;
        }
    }

    void released(int button) {
        if (std::exchange(onRelease_, 0) != button) return;
        tellIn(traysTurn);
    }

    void tellIn(std::chrono::milliseconds delay) {
        waiting_ = mainLoop_.postDelayed(delay, [this] { tell(); });
    }

    void tell() const {
        const auto handler = handler_;  // it may drop the token, and with it this
        handler();
    }

    RunLoop& mainLoop_;
    const OutsideClicks::IconQuestion iconAt_;
    const EventMonitor::Mask mask_;
    const std::function<void()> handler_;
    std::unique_ptr<XButtonPresses> presses_;
    std::optional<FocusGone> focusGone_;
    QElapsedTimer sinceMenu_;
    int onRelease_ = 0;  // the button that may have gone down on the icon
    Cancellable waiting_;
};

}  // namespace

Cancellable OutsideClicks::addGlobalMonitor(Mask mask, std::function<void()> handler) {
    return Cancellable(std::make_shared<ClickWatch>(mainLoop_, iconAt_, mask, std::move(handler)));
}

}  // namespace purlock::host_linux
