#include "platform/linux/panel/x_panel_window.h"

#include <xcb/shape.h>

#include <array>
#include <chrono>
#include <cmath>
#include <string>

#include "platform/linux/panel/x_connection.h"

namespace purlock::host_linux {

namespace {

constexpr std::chrono::milliseconds windowManagersTurn{100};
constexpr std::uint32_t everyDesktop = 0xFFFFFFFF;

xcb_window_t focused(xcb_connection_t* connection) {
    const XReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return reply ? reply->focus : static_cast<xcb_window_t>(XCB_NONE);
}

/// True if a window of somebody's has the focus, rather than nobody or the ground.
bool isTaken(xcb_connection_t* connection, xcb_window_t focus) {
    return focus != XCB_INPUT_FOCUS_NONE && focus != XCB_INPUT_FOCUS_POINTER_ROOT &&
           focus != rootOf(connection);
}

std::string property(xcb_connection_t* connection, xcb_window_t window, const char* name) {
    constexpr std::uint32_t longestText = 64;  // of four bytes
    const auto cookie = xcb_get_property(connection, 0, window, atomNamed(connection, name),
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, longestText);
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

/// As it calls itself; empty where there is none.
std::string windowManagerName(xcb_connection_t* connection) {
    const std::string bytes = property(connection, rootOf(connection), "_NET_SUPPORTING_WM_CHECK");
    xcb_window_t check = XCB_NONE;
    if (bytes.size() != sizeof check) return {};
    bytes.copy(reinterpret_cast<char*>(&check), sizeof check);
    return property(connection, check, "_NET_WM_NAME");
}

}  // namespace

WindowKind panelWindowKind() {
    xcb_connection_t* const connection = toolkitConnection();
    if (connection == nullptr) return WindowKind::managed;
    const bool inWayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    const bool unmanaged = !inWayland || windowManagerName(connection) == "wlroots wm";
    return unmanaged ? WindowKind::unmanaged : WindowKind::managed;
}

bool isComposited() {
    if (QGuiApplication::platformName().startsWith(QLatin1StringView("wayland"))) return true;
    xcb_connection_t* const connection = toolkitConnection();
    if (connection == nullptr) return false;
    const XReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, atomNamed(connection, "_NET_WM_CM_S0")), nullptr));
    return owner && owner->owner != XCB_NONE;
}

void excludeShadow(QWidget& window, const QRect& panel) {
    xcb_connection_t* const connection = toolkitConnection();
    if (connection == nullptr) return;
    const auto id = static_cast<xcb_window_t>(window.winId());
    const auto pixels = [ratio = window.devicePixelRatioF()](int points) {
        return static_cast<std::uint32_t>(std::lround(points * ratio));
    };
    const std::array extents{pixels(panel.x()), pixels(window.width() - panel.x() - panel.width()),
                             pixels(panel.y()), pixels(window.height() - panel.y() - panel.height())};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id, atomNamed(connection, "_GTK_FRAME_EXTENTS"),
                        XCB_ATOM_CARDINAL, 32, extents.size(), extents.data());
    const xcb_rectangle_t area{static_cast<std::int16_t>(extents[0]), static_cast<std::int16_t>(extents[2]),
                               static_cast<std::uint16_t>(pixels(panel.width())),
                               static_cast<std::uint16_t>(pixels(panel.height()))};
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, id, 0,
                         0, 1, &area);
    xcb_flush(connection);
}

void keepOutOfWindowLists(QWidget& window) {
    xcb_connection_t* const connection = toolkitConnection();
    if (connection == nullptr) return;
    static const std::array states{atomNamed(connection, "_NET_WM_STATE_SKIP_TASKBAR"),
                                   atomNamed(connection, "_NET_WM_STATE_SKIP_PAGER"),
                                   atomNamed(connection, "_NET_WM_STATE_STICKY")};
    const auto id = static_cast<xcb_window_t>(window.winId());
    // Qt adds its own states to those that it finds here when it shows the window.
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id, atomNamed(connection, "_NET_WM_STATE"),
                        XCB_ATOM_ATOM, 32, states.size(), states.data());
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id, atomNamed(connection, "_NET_WM_DESKTOP"),
                        XCB_ATOM_CARDINAL, 32, 1, &everyDesktop);
}

UnmanagedFocus::UnmanagedFocus() {
    delay_.setSingleShot(true);
    delay_.setInterval(windowManagersTurn);
    QObject::connect(&delay_, &QTimer::timeout, &delay_, [this] { giveBack(); });
}

void UnmanagedFocus::take(QWidget& window) {
    xcb_connection_t* const connection = toolkitConnection();
    if (connection == nullptr) return;
    delay_.stop();
    const auto id = static_cast<xcb_window_t>(window.winId());
    const xcb_window_t now = focused(connection);
    if (isTaken(connection, now) && now != id) before_ = now;
    // The time of the click is not used: the toolkit may not know it, and the server ignores a time before
    // the last change.
    xcb_set_input_focus(connection, XCB_INPUT_FOCUS_POINTER_ROOT, id, XCB_CURRENT_TIME);
    xcb_flush(connection);
}

void UnmanagedFocus::giveBackSoon() {
    if (before_ != XCB_NONE) delay_.start();
}

void UnmanagedFocus::giveBack() const {
    xcb_connection_t* const connection = toolkitConnection();
    if (connection == nullptr || isTaken(connection, focused(connection))) return;
    // Refused, without a trace, when the window has gone meanwhile.
    const XReply<xcb_generic_error_t> refused(xcb_request_check(
        connection,
        xcb_set_input_focus_checked(connection, XCB_INPUT_FOCUS_POINTER_ROOT, before_, XCB_CURRENT_TIME)));
}

}  // namespace purlock::host_linux
