#include "platform/linux/desktop/x_window_states.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace purlock::host_linux {

namespace {

xcb_atom_t atomNamed(xcb_connection_t* connection, const char* name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

}  // namespace

void keepOutOfWindowLists(QWidget& window) {
    const auto* x = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x || !x->connection()) return;  // on other platforms Qt may give the interface without a server
    static const std::array states{atomNamed(x->connection(), "_NET_WM_STATE_SKIP_TASKBAR"),
                                   atomNamed(x->connection(), "_NET_WM_STATE_SKIP_PAGER"),
                                   atomNamed(x->connection(), "_NET_WM_STATE_STICKY")};
    // Qt adds its own states to those that it finds here when it shows the window.
    xcb_change_property(x->connection(), XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        atomNamed(x->connection(), "_NET_WM_STATE"), XCB_ATOM_ATOM, 32, states.size(),
                        states.data());
}

}  // namespace purlock::host_linux
