#include "platform/linux/tray/color_scheme_watch.h"

#include <utility>

#include "base/text.h"

namespace purlock::host_linux {

namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* settingsInterface = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* key = "color-scheme";

ColorScheme schemeOf(const BusValue& value) {
    const auto number = value.integer();
    if (number == 1) return ColorScheme::dark;
    if (number == 2) return ColorScheme::light;
    return ColorScheme::unknown;  // also 0: the user has no preference
}

}  // namespace

ColorSchemeWatch::ColorSchemeWatch(BusConnection& connection, Callback onScheme)
    : onScheme_(std::move(onScheme)),
      portal_(connection, portalName, [this](const std::string& owner) { portalChanged(owner); }) {}

/// A portal that has gone leaves the scheme as it was: the desktop looks as before.
void ColorSchemeWatch::portalChanged(const std::string& owner) {
    if (owner.empty()) return;
    portal_.listen(joined({"path='", portalPath, "',interface='", settingsInterface,
                           "',member='SettingChanged',arg0='", appearance, "'"}),
                   [this](const BusIncoming& signal) {
                       BusReader reader = signal.reader();
                       const auto space = reader.nextText();
                       const auto name = reader.nextText();
                       const auto value = reader.next();
                       if (space == appearance && name == key && value) take(*value);
                   });
    ask();
}

void ColorSchemeWatch::ask() {
    auto call = portal_.newCall(portalPath, settingsInterface, "Read");
    call.append(appearance).append(key);
    portal_.call(call, busTimeLimit, [this](const BusIncoming& reply) {
        const auto value = reply.isError() ? std::nullopt : reply.reader().next();
        if (value) take(*value);
    });
}

void ColorSchemeWatch::take(const BusValue& value) {
    const ColorScheme scheme = schemeOf(value);
    if (scheme != std::exchange(scheme_, scheme)) onScheme_(scheme);
}

}  // namespace purlock::host_linux
