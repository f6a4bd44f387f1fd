#include "platform/linux/panel/x_button_presses.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <QPointer>
#include <utility>

#include "platform/linux/panel/x_connection.h"

namespace purlock::host_linux {

namespace {

// Raw events reach everybody, grabs or not, from 2.1 on; touches are known from 2.2 on.
constexpr std::uint16_t majorVersion = 2;
constexpr std::uint16_t minorVersion = 2;

/// Windows of one client have the same first bits.
bool isToolkits(xcb_window_t window) {
    xcb_connection_t* const toolkit = toolkitConnection();
    if (toolkit == nullptr) return false;
    const xcb_setup_t* setup = xcb_get_setup(toolkit);
    return (window & ~setup->resource_id_mask) == setup->resource_id_base;
}

}  // namespace

XButtonPresses::XButtonPresses(ButtonEvents events)
    : events_(std::move(events)), connection_(xcb_connect(nullptr, nullptr)) {
    works_ = xcb_connection_has_error(connection_) == 0 && selectEvents();
    if (!works_) return;
    notifier_.emplace(xcb_get_file_descriptor(connection_), QSocketNotifier::Read);
    QObject::connect(&*notifier_, &QSocketNotifier::activated, &*notifier_, [this] { readEvents(); });
}

XButtonPresses::~XButtonPresses() {
    notifier_.reset();
    xcb_disconnect(connection_);
}

bool XButtonPresses::selectEvents() {
    const auto* extension = xcb_get_extension_data(connection_, &xcb_input_id);
    if (extension == nullptr || extension->present == 0) return false;
    opcode_ = extension->major_opcode;
    const XReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        connection_, xcb_input_xi_query_version(connection_, majorVersion, minorVersion), nullptr));
    if (!version || version->major_version < majorVersion) return false;
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } const wanted{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                   XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE |
                       XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_BEGIN | XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_END};
    const XReply<xcb_generic_error_t> error(xcb_request_check(
        connection_, xcb_input_xi_select_events_checked(connection_, rootOf(connection_), 1, &wanted.head)));
    return !error;
}

void XButtonPresses::readEvents() {
    const QPointer<QSocketNotifier> notifier(&*notifier_);  // null once an event has dropped this
    while (notifier) {
        const XReply<xcb_generic_event_t> event(xcb_poll_for_event(connection_));
        if (!event) break;
        if ((event->response_type & 0x7FU) != XCB_GE_GENERIC) continue;
        const auto& input = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(*event);
        if (input.extension != opcode_) continue;
        switch (input.event_type) {
            case XCB_INPUT_RAW_BUTTON_PRESS:
                events_.pressed(pressAt(static_cast<int>(input.detail)));
                break;
            case XCB_INPUT_RAW_BUTTON_RELEASE:
                events_.released(static_cast<int>(input.detail));
                break;
            case XCB_INPUT_RAW_TOUCH_BEGIN:
                events_.pressed(pressAt(1));
                break;
            case XCB_INPUT_RAW_TOUCH_END:
                events_.released(1);
                break;
            default:
                break;
        }
    }
    if (notifier && xcb_connection_has_error(connection_) != 0) notifier->setEnabled(false);
}

/// Raw events say nothing of where: the pointer is asked, and the windows below it from the ground up.
ButtonPress XButtonPresses::pressAt(int button) {
    constexpr int deepest = 32;
    ButtonPress press;
    press.button = button;
    xcb_window_t window = rootOf(connection_);
    for (int depth = 0; depth < deepest && window != XCB_NONE; ++depth) {
        const XReply<xcb_query_pointer_reply_t> pointer(
            xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, window), nullptr));
        if (!pointer) break;
        press.x = pointer->root_x;
        press.y = pointer->root_y;
        window = pointer->child;
        press.onOwnWindow = press.onOwnWindow || isToolkits(window);
    }
    return press;
}

}  // namespace purlock::host_linux
