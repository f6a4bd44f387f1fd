#pragma once

#include <QTimer>
#include <QWidget>
#include <cstdint>

namespace purlock::host_linux {

/// Who decides the place of the panel's window and gives it the focus.
enum class WindowKind {
    managed,    // the window manager or the compositor
    unmanaged,  // this program alone: tiling window managers move or centre every other window
};

/// On X the window is unmanaged. In a Wayland session with XWayland only compositors built on wlroots, such
/// as sway, give an unmanaged window the keyboard; the others place a managed one where it asks to be. Main
/// thread; asks the server once.
WindowKind panelWindowKind();

/// True if the desktop shows partly transparent windows as such: on Wayland always, on X while there is a
/// compositing manager, which may come and go (EWMH's selection _NET_WM_CM_S0). Main thread; asks the server.
bool isComposited();

/// Lets an unmanaged window take the mouse in its panel alone: a click on the shadow around it goes to the
/// window below. Also tells compositors that it brings its own shadow (_GTK_FRAME_EXTENTS, which they know
/// from GTK). In points; does nothing elsewhere than on X. Main thread.
void excludeShadow(QWidget& window, const QRect& panel);

/// Keeps a managed window out of an X desktop's task bar and pager and shows it on every workspace (EWMH's
/// _NET_WM_STATE and _NET_WM_DESKTOP, for which Qt has no words: some window managers obey the one, some the
/// other). Each time before the window is shown, for a window manager forgets it when the window is hidden.
/// Does nothing elsewhere than on X. Main thread.
void keepOutOfWindowLists(QWidget& window);

/// The keyboard's focus of an unmanaged window, which no window manager gives or takes back. Does nothing
/// elsewhere than on X. Main thread.
class UnmanagedFocus {
  public:
    UnmanagedFocus();

    /// Takes it from the window that has it; `window` is on the screen.
    void take(QWidget& window);

    /// Gives it back to that window, a moment after `take`'s was hidden: a click on a third window gives the
    /// focus to that one, and the window manager comes first.
    void giveBackSoon();

  private:
    void giveBack() const;

    std::uint32_t before_ = 0;  // the window that had it
    QTimer delay_;
};

}  // namespace purlock::host_linux
