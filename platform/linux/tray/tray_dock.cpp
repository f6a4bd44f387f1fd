#include "platform/linux/tray/tray_dock.h"

#include <QApplication>
#include <QCursor>
#include <QToolTip>
#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/linux/drawing/view_style.h"
#include "platform/linux/tray/x_tray_server.h"

namespace purlock::host_linux {

namespace {

constexpr int firstPixels = 24;  // until the tray says how large
constexpr int mostPixels = 128;  // of the icon, however large its place
constexpr std::chrono::milliseconds restTime{700};
constexpr std::chrono::milliseconds untilSecondLook{500};

/// The event as the type that its code stands for.
template <typename Event>
const Event& as(const XOwned<xcb_generic_event_t>& event) {
    return reinterpret_cast<const Event&>(*event);
}

}  // namespace

TrayDock::TrayDock(TrayDockEvents events)
    : events_(std::move(events)), server_(std::make_unique<XTrayServer>()) {
    restTimer_.setSingleShot(true);
    restTimer_.setInterval(restTime);
    QObject::connect(&restTimer_, &QTimer::timeout, &restTimer_, [this] { showToolTip(); });
    secondLook_.setSingleShot(true);
    secondLook_.setInterval(untilSecondLook);
    QObject::connect(&secondLook_, &QTimer::timeout, &secondLook_, [this] { repaint(); });
    if (!server_->connected()) return;
    notifier_.emplace(server_->descriptor(), QSocketNotifier::Read);
    QObject::connect(&*notifier_, &QSocketNotifier::activated, &*notifier_, [this] { readEvents(); });
}

TrayDock::~TrayDock() = default;

void TrayDock::setShown(bool shown) {
    if (!server_->connected() || std::exchange(shown_, shown) == shown) return;
    if (shown) {
        findTray();
    } else {
        undock();
    }
    readEvents();
}

void TrayDock::update() {
    repaint();
}

void TrayDock::setToolTip(std::string text) {
    toolTip_ = std::move(text);
}

std::optional<Rect> TrayDock::frame() {
    if (!docked_) return std::nullopt;
    const auto frame = server_->windowFrame();
    readEvents();  // the answer may have brought some along
    return frame;
}

/// Events also arrive while a function waits for a reply; that function calls this afterwards.
void TrayDock::readEvents() {
    while (const auto event = server_->nextEvent()) {
        switch (event->response_type & 0x7FU) {
            case XCB_CLIENT_MESSAGE:
                if (server_->announcesTray(as<xcb_client_message_event_t>(event))) findTray();
                break;
            case XCB_DESTROY_NOTIFY:
                destroyed(as<xcb_destroy_notify_event_t>(event).window);
                break;
            case XCB_REPARENT_NOTIFY: {
                const auto& reparent = as<xcb_reparent_notify_event_t>(event);
                if (reparent.window == server_->window()) reparented(reparent.parent);
                break;
            }
            case XCB_CONFIGURE_NOTIFY: {
                const auto& configure = as<xcb_configure_notify_event_t>(event);
                if (configure.window == server_->window()) resized(configure.width, configure.height);
                break;
            }
            case XCB_EXPOSE:
                if (as<xcb_expose_event_t>(event).count == 0) repaint();
                break;
            case XCB_ENTER_NOTIFY:
                pointerMoved(/*inside=*/true);
                break;
            case XCB_LEAVE_NOTIFY:
                pointerMoved(/*inside=*/false);
                break;
            case XCB_BUTTON_PRESS:
                pointerMoved(/*inside=*/false);
                pressed(as<xcb_button_press_event_t>(event).detail);
                break;
            default:
                break;
        }
    }
    if (!server_->connected() && notifier_) notifier_->setEnabled(false);
}

void TrayDock::pressed(int button) const {
    if (button == XCB_BUTTON_INDEX_3) {
        events_.menuWanted();
    } else if (button < XCB_BUTTON_INDEX_3) {
        events_.clicked();
    }
}

/// A tray that ends may take the window with it, give it back to the root or leave it where it was.
void TrayDock::destroyed(std::uint32_t window) {
    if (window == server_->window()) {
        server_->forgetWindow();
        undock();
    }
    if (window == server_->tray()) findTray();
}

void TrayDock::reparented(std::uint32_t parent) {
    if (parent != server_->root()) {
        docked_ = true;
        secondLook_.start();
    } else if (docked_) {
        undock();  // else it would stand alone on the screen
    }
}

void TrayDock::resized(int width, int height) {
    width_ = width;
    height_ = height;
    repaint();
}

/// Moves the icon into the tray that is there now.
void TrayDock::findTray() {
    undock();
    if (!shown_ || !server_->findTray()) return;
    width_ = firstPixels;
    height_ = firstPixels;
    server_->dock(firstPixels);
}

void TrayDock::undock() {
    pointerMoved(/*inside=*/false);
    docked_ = false;
    server_->destroyWindow();
}

void TrayDock::repaint() {
    if (!docked_) return;
    const int pixels = std::min({width_, height_, mostPixels});
    server_->paint(events_.paint(pixels, {server_->foreground(), server_->background()}), width_, height_);
}

void TrayDock::pointerMoved(bool inside) {
    if (inside) {
        restTimer_.start();
    } else {
        restTimer_.stop();
        if (qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr) QToolTip::hideText();
    }
}

void TrayDock::showToolTip() const {
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) return;
    QToolTip::showText(QCursor::pos(), toolTipText(lineText(toolTip_)));
}

}  // namespace purlock::host_linux
