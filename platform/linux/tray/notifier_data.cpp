#include "platform/linux/tray/notifier_data.h"

namespace purlock::host_linux {

NotifierPixmap notifierPixmap(const QImage& image) {
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    NotifierPixmap pixmap{image.width(), image.height(), {}};
    pixmap.bytes.reserve(static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.height()) *
                         4);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = straight.pixel(x, y);
            for (const int part : {qAlpha(pixel), qRed(pixel), qGreen(pixel), qBlue(pixel)}) {
                pixmap.bytes.push_back(static_cast<std::uint8_t>(part));
            }
        }
    }
    return pixmap;
}

std::string escapedMarkup(const std::string& text) {
    std::string escaped;
    for (const char byte : text) {
        switch (byte) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            default:
                escaped += byte;
        }
    }
    return escaped;
}

}  // namespace purlock::host_linux
