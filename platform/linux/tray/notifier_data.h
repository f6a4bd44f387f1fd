#pragma once

#include <QImage>
#include <cstdint>
#include <string>
#include <vector>

namespace purlock::host_linux {

/// A picture as status notifier items hand it out: four bytes a pixel, alpha, red, green, blue, in this order
/// on every machine, not premultiplied, row after row.
struct NotifierPixmap {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> bytes;

    bool operator==(const NotifierPixmap&) const = default;
};

/// Pure; any thread. Nothing at all of a null image.
NotifierPixmap notifierPixmap(const QImage& image);

/// The parts of the item that a tray shows.
struct NotifierLook {
    std::vector<NotifierPixmap> icon;  // the same in several sizes; empty: nothing to be seen
    std::string iconName;              // of an icon theme's own drawing of it; may be empty
    std::string description;           // of the icon, for screen readers
    std::string toolTip;               // plain text

    bool operator==(const NotifierLook&) const = default;
};

/// Plain text for where some trays read markup: "&", "<" and ">" are escaped. Trays that do not then show
/// the escapes, which is better than obeying a text. Pure; any thread.
std::string escapedMarkup(const std::string& text);

}  // namespace purlock::host_linux
