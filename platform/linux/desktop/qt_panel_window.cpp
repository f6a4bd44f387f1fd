#include "platform/linux/desktop/qt_panel_window.h"

#include <QGuiApplication>
#include <QScreen>
#include <utility>

#include "platform/linux/desktop/panel_surface.h"

namespace purlock::host_linux {

namespace {

/// Screen points with y upwards from the bottom edge of the primary screen, and Qt's with y downwards.
double flipped(double y, double height) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().bottom() + 1 - (y + height) : y;
}

class QtPanelWindow final : public PanelWindow {
  public:
    QtPanelWindow(const PanelStyle& style, PanelWindowEvents events)
        : events_(std::move(events)), frame_(style.contentRect) {}

    void setContent(const View& content) override { surface().setContent(content); }

    bool isVisible() const override { return surface_ && surface_->isVisible(); }

    Rect frame() const override { return frame_; }

    void setFrameOrigin(Point origin) override {
        frame_.x = origin.x;
        frame_.y = origin.y;
    }

    void makeKeyAndOrderFront() override {
        surface().move(onScreen());
        surface().show();
        surface().raise();
        surface().activateWindow();
    }

    void orderOut() override {
        if (surface_) surface_->hide();
    }

  private:
    PanelSurface& surface() {
        if (!surface_) {
            surface_ = std::make_unique<PanelSurface>(events_);
            surface_->setFixedSize(static_cast<int>(frame_.width), static_cast<int>(frame_.height));
        }
        return *surface_;
    }

    QPoint onScreen() const {
        return {static_cast<int>(frame_.x), static_cast<int>(flipped(frame_.y, frame_.height))};
    }

    const PanelWindowEvents events_;
    Rect frame_;
    std::unique_ptr<PanelSurface> surface_;
};

}  // namespace

std::unique_ptr<PanelWindow> QtPanelWindows::makePanel(const PanelStyle& style, PanelWindowEvents events) {
    return std::make_unique<QtPanelWindow>(style, std::move(events));
}

}  // namespace purlock::host_linux
