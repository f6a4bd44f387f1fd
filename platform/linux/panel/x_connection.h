#pragma once

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace purlock::host_linux {

// Small helpers for what the toolkit has no words for on X. Main thread.

struct XFree {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using XReply = std::unique_ptr<T, XFree>;

/// The toolkit's own connection to the X server; null on other platforms, where Qt may give the interface
/// without a server.
inline xcb_connection_t* toolkitConnection() {
    if (qGuiApp == nullptr || QGuiApplication::platformName() != QLatin1StringView("xcb")) return nullptr;
    const auto* x = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x != nullptr ? x->connection() : nullptr;
}

inline xcb_atom_t atomNamed(xcb_connection_t* connection, std::string_view name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

inline xcb_window_t rootOf(xcb_connection_t* connection) {
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

}  // namespace purlock::host_linux
