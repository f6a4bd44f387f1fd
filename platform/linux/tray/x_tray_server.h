#pragma once

#include <xcb/render.h>
#include <xcb/xcb.h>

#include <QColor>
#include <QImage>
#include <cstdint>
#include <memory>
#include <optional>

#include "ui/window_seams.h"

namespace purlock::host_linux {

/// A pointer from xcb that is to be freed.
struct FreeDeleter {
    void operator()(void* memory) const;
};
template <typename T>
using XOwned = std::unique_ptr<T, FreeDeleter>;

/// A connection to the X server and what of the system tray protocol goes over it: who the tray is, the one
/// window that is docked into it, and the picture in that window.
///
/// Main thread. Each operation is flushed. A request that the server refuses, because a window has gone
/// meanwhile, has no effect: its end comes as an event too.
class XTrayServer {
  public:
    /// Connects to the server of $DISPLAY.
    XTrayServer();
    ~XTrayServer();
    XTrayServer(const XTrayServer&) = delete;
    XTrayServer& operator=(const XTrayServer&) = delete;

    bool connected() const;
    int descriptor() const;

    /// The next event that has arrived; null when there is none.
    XOwned<xcb_generic_event_t> nextEvent();

    xcb_window_t root() const { return screen_->root; }
    xcb_window_t tray() const { return tray_; }      // 0: none
    xcb_window_t window() const { return window_; }  // 0: none

    /// True if a message on the root window announces a new tray.
    bool announcesTray(const xcb_client_message_event_t& message) const;

    /// Finds the tray and listens to its end. False when there is none.
    bool findTray();

    /// Makes the window and asks the tray to take it.
    void dock(int pixels);
    void destroyWindow();
    void forgetWindow() { window_ = XCB_NONE; }

    /// The colour that the tray asks for.
    std::optional<QColor> foreground();

    /// The colour of the tray below the corners of the window, where the icon is clear; absent when the
    /// server does not tell it.
    std::optional<QColor> background();

    /// In pixels of the screen, y downwards.
    std::optional<Rect> windowFrame();

    /// Shows `image` in the middle of the window of that size, over what the tray has there.
    void paint(const QImage& image, int width, int height);

  private:
    enum Atom { selection, manager, opcode, visual, colors, embedInfo, windowName, utf8, atomCount };

    struct Look {
        std::uint8_t depth = XCB_COPY_FROM_PARENT;
        xcb_visualid_t visual = XCB_COPY_FROM_PARENT;
        bool hasAlpha = false;
    };

    void internAtoms();
    XOwned<xcb_get_property_reply_t> trayProperty(Atom name, xcb_atom_t type, std::uint32_t words);
    Look askedLook();
    void makeWindow(const Look& look, int pixels);
    void describeWindow(int pixels);
    void setSizeHints(std::uint32_t pixels);
    void requestDock();
    xcb_render_pictformat_t windowFormat();
    xcb_render_picture_t pictureOf(const QImage& image);

    int screenNumber_ = 0;
    xcb_connection_t* const connection_;
    xcb_screen_t* screen_ = nullptr;
    xcb_atom_t atoms_[atomCount] = {};
    xcb_window_t tray_ = XCB_NONE;
    xcb_window_t window_ = XCB_NONE;
    xcb_colormap_t colormap_ = XCB_NONE;
    xcb_visualid_t visual_ = XCB_NONE;
};

}  // namespace purlock::host_linux
