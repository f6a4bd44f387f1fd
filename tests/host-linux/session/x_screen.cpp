#include "tests/host-linux/session/x_screen.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace purlock::test {

namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T* reply) {
    return {reply, &std::free};
}

enum class Kind { trayIcon, panel, menu, toolTip };

/// A connection for one question.
class Screen {
  public:
    Screen() : connection_(xcb_connect(nullptr, nullptr)) {}
    ~Screen() { xcb_disconnect(connection_); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    bool isThere() const { return xcb_connection_has_error(connection_) == 0; }
    const xcb_screen_t& first() const { return *xcb_setup_roots_iterator(xcb_get_setup(connection_)).data; }

    /// The program's first window of this kind that can be seen.
    std::optional<ScreenArea> find(Kind kind) {
        const auto found = find(first().root, [&](xcb_window_t window) {
            return isOf(window, "purlock") && isViewable(window) && kindOf(window) == kind;
        });
        return found ? area(*found) : std::nullopt;
    }

    /// The highest byte of a pixel of the panel's window; absent where its depth has no place for one.
    std::optional<int> opacityOfPanel(std::int16_t x, std::int16_t y) {
        const auto panel = find(first().root, [&](xcb_window_t window) {
            return isOf(window, "purlock") && isViewable(window) && kindOf(window) == Kind::panel;
        });
        if (!panel) return std::nullopt;
        const auto cookie =
            xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, *panel, x, y, 1, 1, ~std::uint32_t{0});
        const auto image = owned(xcb_get_image_reply(connection_, cookie, nullptr));
        constexpr int depthWithOpacity = 32;
        if (!image || image->depth != depthWithOpacity) return std::nullopt;
        return xcb_get_image_data(image.get())[3];
    }

    std::optional<ScreenArea> areaOf(const std::string& instance) {
        const auto found = find(
            first().root, [&](xcb_window_t window) { return isOf(window, instance) && isViewable(window); });
        return found ? area(*found) : std::nullopt;
    }

    /// The focus may be with a window inside that of the program.
    bool isFocused(const std::string& instance) {
        const auto focus =
            owned(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        xcb_window_t window = focus ? focus->focus : XCB_NONE;
        while (window > XCB_INPUT_FOCUS_POINTER_ROOT && window != first().root) {
            if (isOf(window, instance)) return true;
            const auto tree =
                owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
            window = tree ? tree->parent : XCB_NONE;
        }
        return false;
    }

    /// A window manager that was killed leaves the property behind, but not the window that it names.
    bool isManaged() {
        const std::string bytes = property(first().root, atom("_NET_SUPPORTING_WM_CHECK"));
        xcb_window_t check = XCB_NONE;
        if (bytes.size() != sizeof check) return false;
        std::memcpy(&check, bytes.data(), sizeof check);
        return attributesOf(check) != nullptr;
    }

  private:
    /// The first window that is wanted, `window` or below it.
    template <typename IsWanted>
    std::optional<xcb_window_t> find(xcb_window_t window, const IsWanted& isWanted) {
        if (isWanted(window)) return window;
        const auto children =
            owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
        if (!children) return std::nullopt;
        for (int i = 0; i < xcb_query_tree_children_length(children.get()); ++i) {
            if (auto found = find(xcb_query_tree_children(children.get())[i], isWanted)) return found;
        }
        return std::nullopt;
    }

    xcb_atom_t atom(std::string_view name) {
        const auto cookie =
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
        const auto reply = owned(xcb_intern_atom_reply(connection_, cookie, nullptr));
        return reply ? reply->atom : XCB_NONE;
    }

    std::string property(xcb_window_t window, xcb_atom_t name) {
        const auto cookie = xcb_get_property(connection_, 0, window, name, XCB_ATOM_ANY, 0, 64);
        const auto reply = owned(xcb_get_property_reply(connection_, cookie, nullptr));
        if (!reply) return {};
        return {static_cast<const char*>(xcb_get_property_value(reply.get())),
                static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
    }

    bool isOf(xcb_window_t window, const std::string& instance) {
        return property(window, XCB_ATOM_WM_CLASS).starts_with(instance + '\0');
    }

    /// The toolkit's windows speak a window manager's protocols; that in the tray does not. Of the others the
    /// panel is the highest, and only a tip is one line high.
    Kind kindOf(xcb_window_t window) {
        constexpr int twoLines = 40;
        constexpr int halfPanel = 300;
        if (property(window, atom("WM_PROTOCOLS")).empty()) return Kind::trayIcon;
        const auto place = area(window);
        if (place && place->height >= halfPanel) return Kind::panel;
        return place && place->height >= twoLines ? Kind::menu : Kind::toolTip;
    }

    bool isViewable(xcb_window_t window) {
        const auto attributes = attributesOf(window);
        return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&std::free)> attributesOf(
        xcb_window_t window) {
        const auto cookie = xcb_get_window_attributes(connection_, window);
        return owned(xcb_get_window_attributes_reply(connection_, cookie, nullptr));
    }

    std::optional<ScreenArea> area(xcb_window_t window) {
        const auto size =
            owned(xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
        const auto cookie = xcb_translate_coordinates(connection_, window, first().root, 0, 0);
        const auto place = owned(xcb_translate_coordinates_reply(connection_, cookie, nullptr));
        if (!size || !place) return std::nullopt;
        return ScreenArea{place->dst_x, place->dst_y, size->width, size->height};
    }

    xcb_connection_t* const connection_;
};

std::optional<ScreenArea> find(Kind kind) {
    Screen screen;
    if (!screen.isThere()) return std::nullopt;
    return screen.find(kind);
}

}  // namespace

ScreenArea wholeScreen() {
    const Screen screen;
    if (!screen.isThere()) return {};
    return {0, 0, screen.first().width_in_pixels, screen.first().height_in_pixels};
}

bool windowManagerIsThere() {
    Screen screen;
    return screen.isThere() && screen.isManaged();
}

bool AtRest::sees(const std::optional<ScreenArea>& area) {
    constexpr std::chrono::milliseconds moment{200};
    const auto now = std::chrono::steady_clock::now();
    if (!area || area != last_) since_ = now;
    last_ = area;
    return now - since_ >= moment;
}

std::optional<ScreenArea> trayIconOnScreen() {
    return find(Kind::trayIcon);
}

std::optional<ScreenArea> panelOnScreen() {
    return find(Kind::panel);
}

std::optional<int> opacityOfPanel(int x, int y) {
    Screen screen;
    if (!screen.isThere()) return std::nullopt;
    return screen.opacityOfPanel(static_cast<std::int16_t>(x), static_cast<std::int16_t>(y));
}

struct CompositingClaim::Connection {
    xcb_connection_t* const handle = xcb_connect(nullptr, nullptr);
};

CompositingClaim::CompositingClaim() : connection_(std::make_unique<Connection>()) {
    xcb_connection_t* const handle = connection_->handle;
    if (xcb_connection_has_error(handle) != 0) return;
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(handle)).data;
    const xcb_window_t window = xcb_generate_id(handle);
    xcb_create_window(handle, 0, window, screen.root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      screen.root_visual, 0, nullptr);
    constexpr std::string_view name = "_NET_WM_CM_S0";
    const auto atom =
        owned(xcb_intern_atom_reply(handle, xcb_intern_atom(handle, 0, name.size(), name.data()), nullptr));
    if (!atom) return;
    xcb_set_selection_owner(handle, window, atom->atom, XCB_CURRENT_TIME);
    owned(xcb_get_input_focus_reply(handle, xcb_get_input_focus(handle), nullptr));  // has been done by now
}

CompositingClaim::~CompositingClaim() {
    xcb_disconnect(connection_->handle);
}

bool isOnScreen(const std::string& instance) {
    Screen screen;
    return screen.isThere() && screen.areaOf(instance).has_value();
}

std::optional<ScreenArea> areaOnScreen(const std::string& instance) {
    Screen screen;
    if (!screen.isThere()) return std::nullopt;
    return screen.areaOf(instance);
}

bool isFocused(const std::string& instance) {
    Screen screen;
    return screen.isThere() && screen.isFocused(instance);
}

std::optional<ScreenArea> menuOnScreen() {
    return find(Kind::menu);
}

}  // namespace purlock::test
