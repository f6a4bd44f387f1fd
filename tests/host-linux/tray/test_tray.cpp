#include "tests/host-linux/tray/test_tray.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace purlock::test {

namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T* reply) {
    return {reply, &std::free};
}

xcb_screen_t* screenOf(xcb_connection_t* connection) {
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

xcb_atom_t atomNamed(xcb_connection_t* connection, const std::string& name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : XCB_NONE;
}

/// A visual of 32 bits, which has alpha.
xcb_visualid_t visualWithAlpha(xcb_screen_t* screen) {
    for (auto depths = xcb_screen_allowed_depths_iterator(screen); depths.rem > 0; xcb_depth_next(&depths)) {
        if (depths.data->depth == 32) return xcb_depth_visuals_iterator(depths.data).data->visual_id;
    }
    return 0;
}

}  // namespace

TestTray::TestTray(const Options& options)
    : connection_(xcb_connect(nullptr, nullptr)),
      screen_(screenOf(connection_)),
      window_(xcb_generate_id(connection_)),
      opcode_(atom("_NET_SYSTEM_TRAY_OPCODE")),
      obeysSizeHints_(options.obeysSizeHints) {
    const std::array<std::uint32_t, 2> values{options.ground, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen_->root, 100, 0, 200, 30, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    xcb_map_window(connection_, window_);
    setProperties(options);
    xcb_set_selection_owner(connection_, window_, atom("_NET_SYSTEM_TRAY_S0"), XCB_CURRENT_TIME);
    announce();
}

TestTray::~TestTray() {
    xcb_disconnect(connection_);
}

xcb_atom_t TestTray::atom(const std::string& name) {
    return atomNamed(connection_, name);
}

void TestTray::setProperties(const Options& options) {
    if (options.blends) {
        const xcb_visualid_t visual = visualWithAlpha(screen_);
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom("_NET_SYSTEM_TRAY_VISUAL"),
                            XCB_ATOM_VISUALID, 32, 1, &visual);
    }
    if (options.foreground) {
        std::array<std::uint32_t, 12> colors{};
        for (std::size_t part = 0; part < 3; ++part) {
            colors[part] = ((*options.foreground >> (16 - 8 * part)) & 0xFFU) * 257;
        }
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom("_NET_SYSTEM_TRAY_COLORS"),
                            XCB_ATOM_CARDINAL, 32, 12, colors.data());
    }
}

void TestTray::announce() {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = screen_->root;
    message.type = atom("MANAGER");
    message.data.data32[1] = atom("_NET_SYSTEM_TRAY_S0");
    message.data.data32[2] = window_;
    std::array<char, sizeof message> bytes{};
    std::memcpy(bytes.data(), &message, sizeof message);
    xcb_send_event(connection_, 0, screen_->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY, bytes.data());
    xcb_flush(connection_);
}

void TestTray::serve() {
    while (const auto event = owned(xcb_poll_for_event(connection_))) {
        const int type = event->response_type & 0x7F;
        if (type == XCB_CLIENT_MESSAGE) {
            const auto* message = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
            if (message->type == opcode_ && message->data.data32[1] == 0) take(message->data.data32[2]);
        } else if (type == XCB_DESTROY_NOTIFY) {
            const auto* gone = reinterpret_cast<const xcb_destroy_notify_event_t*>(event.get());
            std::erase(icons_, gone->window);
        }
    }
}

/// ICCCM's least size, or one pixel where the icon asks for none.
std::array<std::uint32_t, 2> TestTray::sizeFor(xcb_window_t icon) {
    constexpr std::uint32_t minimumSize = 1U << 4U;
    if (!obeysSizeHints_) return {24, 24};
    const auto hints = owned(xcb_get_property_reply(
        connection_,
        xcb_get_property(connection_, 0, icon, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 0, 18),
        nullptr));
    if (!hints || hints->value_len < 7) return {1, 1};
    const auto* words = static_cast<const std::uint32_t*>(xcb_get_property_value(hints.get()));
    if ((words[0] & minimumSize) == 0) return {1, 1};
    return {words[5], words[6]};
}

void TestTray::take(xcb_window_t icon) {
    const auto x = static_cast<std::int16_t>(3 + 24 * static_cast<int>(icons_.size()));
    const auto size = sizeFor(icon);
    xcb_reparent_window(connection_, icon, window_, x, 3);
    xcb_configure_window(connection_, icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data());
    xcb_map_window(connection_, icon);
    xcb_flush(connection_);
    icons_.push_back(icon);
}

void TestTray::release() {
    for (const xcb_window_t icon : icons_) xcb_reparent_window(connection_, icon, screen_->root, 0, 0);
    xcb_destroy_window(connection_, window_);
    xcb_flush(connection_);
    free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_),
                                   nullptr));  // until it is done
}

void announceOneDesktop() {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) == 0) {
        const std::uint32_t count = 1;
        const auto cookie = xcb_change_property_checked(
            connection, XCB_PROP_MODE_REPLACE, screenOf(connection)->root,
            atomNamed(connection, "_NET_NUMBER_OF_DESKTOPS"), XCB_ATOM_CARDINAL, 32, 1, &count);
        free(xcb_request_check(connection, cookie));  // until it is done
    }
    xcb_disconnect(connection);
}

std::vector<std::uint32_t> screenColors(int x, int y, int width, int height) {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    std::vector<std::uint32_t> colors;
    if (xcb_connection_has_error(connection) == 0) {
        const auto cookie =
            xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, screenOf(connection)->root,
                          static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                          static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), ~0U);
        const auto reply = owned(xcb_get_image_reply(connection, cookie, nullptr));
        if (reply) {
            colors.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
            std::memcpy(colors.data(), xcb_get_image_data(reply.get()),
                        std::min(colors.size() * 4,
                                 static_cast<std::size_t>(xcb_get_image_data_length(reply.get()))));
            for (std::uint32_t& color : colors) color &= 0xFFFFFFU;
        }
    }
    xcb_disconnect(connection);
    return colors;
}

}  // namespace purlock::test
