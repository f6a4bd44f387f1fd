#pragma once

#include <QColor>
#include <QImage>
#include <QSocketNotifier>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "ui/window_seams.h"

namespace purlock::host_linux {

class XTrayServer;

/// Absent what the tray does not say.
struct TrayColors {
    std::optional<QColor> foreground;  // that the tray asks its icons to have
    std::optional<QColor> background;  // on which they stand
};

struct TrayDockEvents {
    std::function<void()> clicked;     // with any button but the right one
    std::function<void()> menuWanted;  // the right one

    /// The icon for a square of `pixels`, null for none.
    std::function<QImage(int pixels, const TrayColors& colors)> paint;
};

/// A small window in the X server's system tray, for desktops without status notifier items.
///
/// It stands in the tray that is there, and in the next one when that has gone. It has a connection of its
/// own to the server of $DISPLAY, so that it works independent of the toolkit's platform, and never sees the
/// toolkit's events; without a server it does nothing. Main thread.
class TrayDock {
  public:
    explicit TrayDock(TrayDockEvents events);
    ~TrayDock();
    TrayDock(const TrayDock&) = delete;
    TrayDock& operator=(const TrayDock&) = delete;

    /// True if the icon is to be in the tray from now on. At first it is not.
    void setShown(bool shown);

    /// Asks `paint` again.
    void update();

    /// Plain text; shown while the pointer rests on the icon.
    void setToolTip(std::string text);

    /// Where the icon is, in pixels with y downwards; absent while it is in no tray.
    std::optional<Rect> frame();

  private:
    void readEvents();
    void destroyed(std::uint32_t window);
    void reparented(std::uint32_t parent);
    void resized(int width, int height);
    void findTray();
    void undock();
    void repaint();
    void pressed(int button) const;
    void pointerMoved(bool inside);
    void showToolTip() const;

    const TrayDockEvents events_;
    const std::unique_ptr<XTrayServer> server_;
    std::optional<QSocketNotifier> notifier_;
    bool shown_ = false;
    bool docked_ = false;
    int width_ = 0;
    int height_ = 0;
    std::string toolTip_;
    QTimer restTimer_;   // the pointer has to rest for a while
    QTimer secondLook_;  // at a tray that paints its own ground later than it takes the icon
};

}  // namespace purlock::host_linux
