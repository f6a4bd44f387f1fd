#include "platform/linux/tray/x_tray_server.h"

#include <xcb/xcb_renderutil.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

namespace purlock::host_linux {

namespace {

constexpr std::uint32_t requestDockOpcode = 0;
constexpr std::uint32_t embedVersion = 0;
constexpr std::uint32_t embedMapped = 1;

}  // namespace

void FreeDeleter::operator()(void* memory) const {
    std::free(memory);
}

XTrayServer::XTrayServer() : connection_(xcb_connect(nullptr, &screenNumber_)) {
    if (!connected()) return;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (int number = 0; number < screenNumber_ && screens.rem > 1; ++number) xcb_screen_next(&screens);
    screen_ = screens.data;
    internAtoms();
    // A new tray announces itself to the root window.
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, root(), XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection_);
}

XTrayServer::~XTrayServer() {
    xcb_render_util_disconnect(connection_);  // its cache
    xcb_disconnect(connection_);              // the window goes with it
}

bool XTrayServer::connected() const {
    return xcb_connection_has_error(connection_) == 0;
}

int XTrayServer::descriptor() const {
    return xcb_get_file_descriptor(connection_);
}

XOwned<xcb_generic_event_t> XTrayServer::nextEvent() {
    return XOwned<xcb_generic_event_t>(xcb_poll_for_event(connection_));
}

void XTrayServer::internAtoms() {
    const std::array<std::string, atomCount> names{"_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber_),
                                                   "MANAGER",
                                                   "_NET_SYSTEM_TRAY_OPCODE",
                                                   "_NET_SYSTEM_TRAY_VISUAL",
                                                   "_NET_SYSTEM_TRAY_COLORS",
                                                   "_XEMBED_INFO",
                                                   "_NET_WM_NAME",
                                                   "UTF8_STRING"};
    std::array<xcb_intern_atom_cookie_t, atomCount> cookies{};
    for (std::size_t index = 0; index < names.size(); ++index) {
        cookies[index] = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(names[index].size()),
                                         names[index].c_str());
    }
    for (std::size_t index = 0; index < names.size(); ++index) {
        const XOwned<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection_, cookies[index], nullptr));
        if (reply) atoms_[index] = reply->atom;
    }
}

bool XTrayServer::announcesTray(const xcb_client_message_event_t& message) const {
    return message.window == root() && message.type == atoms_[manager] &&
           message.data.data32[1] == atoms_[selection];
}

bool XTrayServer::findTray() {
    const XOwned<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, atoms_[selection]), nullptr));
    tray_ = reply ? reply->owner : XCB_NONE;
    if (tray_ == XCB_NONE) return false;
    // A tray that has ended since then makes this fail, and no event would tell.
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    const XOwned<xcb_generic_error_t> error(xcb_request_check(
        connection_, xcb_change_window_attributes_checked(connection_, tray_, XCB_CW_EVENT_MASK, &mask)));
    if (error) tray_ = XCB_NONE;
    return tray_ != XCB_NONE;
}

XOwned<xcb_get_property_reply_t> XTrayServer::trayProperty(Atom name, xcb_atom_t type, std::uint32_t words) {
    XOwned<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, tray_, atoms_[name], type, 0, words), nullptr));
    const bool whole = reply && reply->format == 32 && reply->type == type && reply->value_len == words;
    return whole ? std::move(reply) : nullptr;
}

/// The visual of a tray that blends its icons, if the server has one of that depth; else the visual of the
/// tray's window.
XTrayServer::Look XTrayServer::askedLook() {
    const auto property = trayProperty(visual, XCB_ATOM_VISUALID, 1);
    if (!property) return {};
    const auto wanted = *static_cast<xcb_visualid_t*>(xcb_get_property_value(property.get()));
    for (auto depths = xcb_screen_allowed_depths_iterator(screen_); depths.rem > 0; xcb_depth_next(&depths)) {
        if (depths.data->depth != 32) continue;
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == wanted) return {32, wanted, true};
        }
    }
    return {};
}

void XTrayServer::dock(int pixels) {
    makeWindow(askedLook(), pixels);
    describeWindow(pixels);
    requestDock();
    xcb_flush(connection_);
}

void XTrayServer::makeWindow(const Look& look, int pixels) {
    constexpr std::uint32_t events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                     XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_ENTER_WINDOW |
                                     XCB_EVENT_MASK_LEAVE_WINDOW;
    window_ = xcb_generate_id(connection_);
    visual_ = look.hasAlpha ? look.visual : screen_->root_visual;
    const auto size = static_cast<std::uint16_t>(pixels);
    if (look.hasAlpha) {
        colormap_ = xcb_generate_id(connection_);
        xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colormap_, root(), look.visual);
        const std::array<std::uint32_t, 4> clear{0, 0, events, colormap_};
        xcb_create_window(connection_, look.depth, window_, root(), -1, -1, size, size, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, look.visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                          clear.data());
    } else {
        const std::array<std::uint32_t, 2> likeTheTray{XCB_BACK_PIXMAP_PARENT_RELATIVE, events};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root(), -1, -1, size, size, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXMAP | XCB_CW_EVENT_MASK, likeTheTray.data());
    }
}

/// ICCCM's WM_SIZE_HINTS: some trays give a window without them a single pixel.
void XTrayServer::setSizeHints(std::uint32_t pixels) {
    constexpr std::uint32_t minimumSize = 1U << 4U;
    constexpr std::uint32_t baseSize = 1U << 8U;
    std::array<std::uint32_t, 18> hints{};
    hints[0] = minimumSize | baseSize;
    hints[5] = pixels;  // the least width and height
    hints[6] = pixels;
    hints[15] = pixels;  // the base ones
    hints[16] = pixels;
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
}

void XTrayServer::describeWindow(int pixels) {
    setSizeHints(static_cast<std::uint32_t>(pixels));
    const std::array<std::uint32_t, 2> info{embedVersion, embedMapped};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atoms_[embedInfo], atoms_[embedInfo], 32,
                        info.size(), info.data());
    constexpr std::string_view classes("purlock\0Purlock\0", 16);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        classes.size(), classes.data());
    constexpr std::string_view name("Purlock");
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atoms_[windowName], atoms_[utf8], 8,
                        name.size(), name.data());
}

void XTrayServer::requestDock() {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = tray_;
    message.type = atoms_[opcode];
    message.data.data32[0] = XCB_CURRENT_TIME;
    message.data.data32[1] = requestDockOpcode;
    message.data.data32[2] = window_;
    std::array<char, sizeof message> bytes{};
    std::memcpy(bytes.data(), &message, sizeof message);
    xcb_send_event(connection_, 0, tray_, XCB_EVENT_MASK_NO_EVENT, bytes.data());
}

void XTrayServer::destroyWindow() {
    if (window_ != XCB_NONE) xcb_destroy_window(connection_, window_);
    if (colormap_ != XCB_NONE) xcb_free_colormap(connection_, colormap_);
    window_ = XCB_NONE;
    colormap_ = XCB_NONE;
    xcb_flush(connection_);
}

/// The property holds four colours of three parts of 16 bits each; the first is for plain icons.
std::optional<QColor> XTrayServer::foreground() {
    const auto property = trayProperty(colors, XCB_ATOM_CARDINAL, 12);
    if (!property) return std::nullopt;
    const auto* parts = static_cast<std::uint32_t*>(xcb_get_property_value(property.get()));
    const auto part = [&](int index) { return static_cast<int>((parts[index] & 0xFFFFU) / 257); };
    return QColor(part(0), part(1), part(2));
}

std::optional<Rect> XTrayServer::windowFrame() {
    if (window_ == XCB_NONE) return std::nullopt;
    const auto geometryCookie = xcb_get_geometry(connection_, window_);
    const auto placeCookie = xcb_translate_coordinates(connection_, window_, root(), 0, 0);
    const XOwned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection_, geometryCookie, nullptr));
    const XOwned<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(connection_, placeCookie, nullptr));
    if (!geometry || !place) return std::nullopt;
    return Rect{static_cast<double>(place->dst_x), static_cast<double>(place->dst_y),
                static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
}

std::optional<QColor> XTrayServer::background() {
    const auto frame = windowFrame();
    if (!frame || frame->width < 1 || screen_->root_depth < 24) return std::nullopt;
    const auto x = static_cast<std::int16_t>(frame->x);
    const auto y = static_cast<std::int16_t>(frame->y);
    // Reads the whole screen: a tray that blends its icons paints their ground elsewhere.
    const XOwned<xcb_get_image_reply_t> image(xcb_get_image_reply(
        connection_, xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root(), x, y, 1, 1, 0x00FFFFFF),
        nullptr));
    if (!image || xcb_get_image_data_length(image.get()) < 4) return std::nullopt;
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, xcb_get_image_data(image.get()), sizeof pixel);
    return QColor::fromRgb(pixel | 0xFF000000U);
}

xcb_render_pictformat_t XTrayServer::windowFormat() {
    const auto* formats = xcb_render_util_query_formats(connection_);
    const auto* format = formats != nullptr ? xcb_render_util_find_visual_format(formats, visual_) : nullptr;
    return format != nullptr ? format->format : XCB_NONE;
}

/// The image as a picture of the server's, to be freed by the caller; 0 when the server cannot.
xcb_render_picture_t XTrayServer::pictureOf(const QImage& image) {
    const auto* formats = xcb_render_util_query_formats(connection_);
    const auto* argb = formats != nullptr
                           ? xcb_render_util_find_standard_format(formats, XCB_PICT_STANDARD_ARGB_32)
                           : nullptr;
    if (argb == nullptr) return XCB_NONE;
    const auto width = static_cast<std::uint16_t>(image.width());
    const auto height = static_cast<std::uint16_t>(image.height());
    const xcb_pixmap_t pixmap = xcb_generate_id(connection_);
    const xcb_gcontext_t context = xcb_generate_id(connection_);
    const xcb_render_picture_t picture = xcb_generate_id(connection_);
    xcb_create_pixmap(connection_, 32, pixmap, root(), width, height);
    xcb_create_gc(connection_, context, pixmap, 0, nullptr);
    xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width, height, 0, 0, 0, 32,
                  static_cast<std::uint32_t>(image.sizeInBytes()), image.constBits());
    xcb_render_create_picture(connection_, picture, pixmap, argb->id, 0, nullptr);
    xcb_free_gc(connection_, context);
    xcb_free_pixmap(connection_, pixmap);  // the picture keeps it
    return picture;
}

void XTrayServer::paint(const QImage& image, int width, int height) {
    if (window_ == XCB_NONE) return;
    xcb_clear_area(connection_, 0, window_, 0, 0, 0, 0);
    const xcb_render_pictformat_t format = windowFormat();
    const QImage pixels = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const xcb_render_picture_t source = format == XCB_NONE || pixels.isNull() ? XCB_NONE : pictureOf(pixels);
    if (source != XCB_NONE) {
        const xcb_render_picture_t target = xcb_generate_id(connection_);
        xcb_render_create_picture(connection_, target, window_, format, 0, nullptr);
        const auto x = static_cast<std::int16_t>((width - pixels.width()) / 2);
        const auto y = static_cast<std::int16_t>((height - pixels.height()) / 2);
        xcb_render_composite(connection_, XCB_RENDER_PICT_OP_OVER, source, XCB_NONE, target, 0, 0, 0, 0, x, y,
                             static_cast<std::uint16_t>(pixels.width()),
                             static_cast<std::uint16_t>(pixels.height()));
        xcb_render_free_picture(connection_, target);
        xcb_render_free_picture(connection_, source);
    }
    xcb_flush(connection_);
}

}  // namespace purlock::host_linux
