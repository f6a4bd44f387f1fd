#include "bench/screen_probe.h"

#include <xcb/xcbext.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace purlock::bench {

namespace {

/// The X server's extension for tests, without its library: one request of it is needed.
xcb_extension_t testExtension{"XTEST", 0};
constexpr std::uint8_t fakeInput = 2;

struct FakeInput {
    std::uint8_t major = 0;  // filled in by xcb, like the next two
    std::uint8_t minor = 0;
    std::uint16_t length = 0;
    std::uint8_t event = 0;
    std::uint8_t button = 1;
    std::array<std::uint8_t, 2> unused = {};
    std::uint32_t delay = 0;
    std::array<std::uint8_t, 24> notForButtons = {};
};
static_assert(sizeof(FakeInput) == 36);

}  // namespace

ScreenProbe::ScreenProbe()
    : connection_(xcb_connect(nullptr, nullptr)),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root) {
    xcb_get_extension_data(connection_, &testExtension);  // the answer is here before it is needed
}

ScreenProbe::~ScreenProbe() {
    xcb_disconnect(connection_);
}

std::vector<std::uint32_t> ScreenProbe::colors(const test::ScreenArea& area) {
    const auto cookie =
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_, static_cast<std::int16_t>(area.x),
                      static_cast<std::int16_t>(area.y), static_cast<std::uint16_t>(area.width),
                      static_cast<std::uint16_t>(area.height), ~0U);
    const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
        xcb_get_image_reply(connection_, cookie, nullptr), &std::free);
    const auto count = static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height);
    if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < count * 4) return {};
    std::vector<std::uint32_t> result(count);
    std::memcpy(result.data(), xcb_get_image_data(reply.get()), count * 4);
    for (std::uint32_t& each : result) each &= 0xFFFFFFU;
    return result;
}

std::uint32_t ScreenProbe::color(int x, int y) {
    const auto one = colors({x, y, 1, 1});
    return one.empty() ? 0 : one.front();
}

void ScreenProbe::click() {
    sendButton(XCB_BUTTON_PRESS);
    sendButton(XCB_BUTTON_RELEASE);
    xcb_flush(connection_);
}

void ScreenProbe::sendButton(std::uint8_t event) {
    FakeInput request;
    request.event = event;
    std::array<iovec, 3> parts{};  // the first two are xcb's own
    parts[2] = {&request, sizeof request};
    const xcb_protocol_request_t protocol{1, &testExtension, fakeInput, 1};
    xcb_send_request(connection_, 0, &parts[2], &protocol);
}

}  // namespace purlock::bench
