#include "platform/linux/panel/qt_panel_window.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <chrono>
#include <functional>
#include <optional>
#include <utility>

#include "platform/linux/drawing/panel_placement.h"
#include "platform/linux/panel/panel_surface.h"
#include "platform/linux/panel/x_panel_window.h"
#include "platform/linux/system/unused_memory.h"

namespace purlock::host_linux {

namespace {

Rect pointsOf(const QRect& rect) {
    return {static_cast<double>(rect.x()), static_cast<double>(rect.y()), static_cast<double>(rect.width()),
            static_cast<double>(rect.height())};
}

double heightOfFirstScreen() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().height() : 0;
}

/// The screen that holds the icon, without its bars; in the shell's coordinates.
Rect availableArea(const std::optional<Rect>& icon) {
    const double height = heightOfFirstScreen();
    const QScreen* screen = nullptr;
    if (icon) {
        const Rect there = flipped(*icon, height);
        screen = QGuiApplication::screenAt(
            {static_cast<int>(there.x + there.width / 2), static_cast<int>(there.y + there.height / 2)});
    }
    if (!screen) screen = QGuiApplication::primaryScreen();
    return screen ? flipped(pointsOf(screen->availableGeometry()), height) : Rect{};
}

}  // namespace

/// Shared with the window that was made; empty once that has gone.
struct OpenPanel {
    std::function<bool()> bringToFront;
    std::function<bool()> isOpen;
};

namespace {

class QtPanelWindow final : public PanelWindow {
  public:
    QtPanelWindow(const PanelStyle& style, PanelWindowEvents events, QtPanelWindows::IconFrame iconFrame,
                  std::shared_ptr<OpenPanel> shared)
        : events_(std::move(events)),
          iconFrame_(std::move(iconFrame)),
          frame_(style.contentRect),
          shared_(std::move(shared)) {
        shared_->bringToFront = [this] {
            if (!isVisible()) return false;
            bringToFront();
            return true;
        };
        shared_->isOpen = [this] { return isVisible(); };
        tidyUp_.setSingleShot(true);
        tidyUp_.setInterval(untilTidyUp);
        QObject::connect(&tidyUp_, &QTimer::timeout, [] { giveBackUnusedMemory(); });
        tidyUp_.start();  // the start of the program is over then
    }

    ~QtPanelWindow() override { *shared_ = {}; }

    void setContent(const View& content) override { surface().setContent(content); }

    bool isVisible() const override { return surface_ && surface_->isVisible(); }

    Rect frame() const override { return frame_; }

    void setFrameOrigin(Point origin) override {
        frame_.x = origin.x;
        frame_.y = origin.y;
    }

    void makeKeyAndOrderFront() override {
        tidyUp_.stop();
        const QRect place = onScreen();
        const PanelEdge edge = edgeNow();
        surface().setPanel(place.size(), edge);
        surface().move(place.topLeft() - QPoint(edge.shadow, edge.shadow));
        if (kind() == WindowKind::managed) keepOutOfWindowLists(surface());
        if (kind() == WindowKind::unmanaged) excludeShadow(surface(), surface().panelRect());
        surface().show();
        bringToFront();
    }

    void orderOut() override {
        if (!surface_) return;
        const bool unmanaged = surface_->isVisible() && kind() == WindowKind::unmanaged;
        surface_->hide();
        if (unmanaged) focus_.giveBackSoon();
        surface_->releaseDrawing();
        tidyUp_.start();
    }

  private:
    /// After a pause: a panel that was closed is often opened again.
    static constexpr std::chrono::seconds untilTidyUp{2};

    /// The same for as long as there is a window.
    WindowKind kind() {
        if (!kind_) kind_ = panelWindowKind();
        return *kind_;
    }

    /// As the desktop is now. Nobody but this program places an unmanaged window, so there its shadow may
    /// belong to it.
    PanelEdge edgeNow() {
        if (!isComposited()) return {};
        return {true, kind() == WindowKind::unmanaged ? shadowRoom : 0};
    }

    PanelSurface& surface() {
        if (!surface_) {
            surface_ = std::make_unique<PanelSurface>(events_, kind());
            surface_->setFixedSize(static_cast<int>(frame_.width), static_cast<int>(frame_.height));
        }
        return *surface_;
    }

    void bringToFront() {
        surface().raise();
        if (kind() == WindowKind::managed) {
            surface().activateWindow();
        } else {
            focus_.take(surface());
        }
    }

    QRect onScreen() const {
        const auto icon = iconFrame_();
        const Rect placed = flipped(placePanel(frame_, icon, availableArea(icon)), heightOfFirstScreen());
        return {static_cast<int>(placed.x), static_cast<int>(placed.y), static_cast<int>(placed.width),
                static_cast<int>(placed.height)};
    }

    const PanelWindowEvents events_;
    const QtPanelWindows::IconFrame iconFrame_;
    Rect frame_;
    const std::shared_ptr<OpenPanel> shared_;
    std::optional<WindowKind> kind_;
    std::unique_ptr<PanelSurface> surface_;
    UnmanagedFocus focus_;
    QTimer tidyUp_;
};

}  // namespace

std::unique_ptr<PanelWindow> QtPanelWindows::makePanel(const PanelStyle& style, PanelWindowEvents events) {
    openPanel_ = std::make_shared<OpenPanel>();
    return std::make_unique<QtPanelWindow>(style, std::move(events), iconFrame_, openPanel_);
}

bool QtPanelWindows::isPanelOpen() const {
    return openPanel_ && openPanel_->isOpen && openPanel_->isOpen();
}

bool QtPanelWindows::bringToFront() {
    return openPanel_ && openPanel_->bringToFront && openPanel_->bringToFront();
}

}  // namespace purlock::host_linux
