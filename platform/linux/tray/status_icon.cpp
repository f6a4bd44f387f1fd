#include "platform/linux/tray/status_icon.h"

#include <QStandardPaths>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "platform/linux/drawing/symbols.h"
#include "platform/linux/drawing/view_style.h"

namespace purlock::host_linux {

namespace {

constexpr std::array iconPixels = {16, 22, 24, 32, 48, 64, 96};

constexpr QRgb lightForeground = qRgb(242, 242, 242);
constexpr QRgb darkForeground = qRgb(38, 38, 38);
constexpr QRgb foregroundOnAnything = qRgb(138, 138, 138);  // 3:1 on white and more on dark bars

QRgb foregroundOn(ColorScheme scheme) {
    switch (scheme) {
        case ColorScheme::dark:
            return lightForeground;
        case ColorScheme::light:
            return darkForeground;
        case ColorScheme::unknown:
            break;
    }
    return foregroundOnAnything;
}

}  // namespace

QImage statusIcon(const SymbolImage& image, int pixels, const std::optional<QColor>& foreground,
                  ColorScheme scheme) {
    if (!hasSymbol(image.name)) return {};
    if (const auto& own = image.colors) {
        return squareSymbol(image.name, pixels,
                            qtColor(scheme == ColorScheme::dark ? own->onDark : own->onAnything));
    }
    return squareSymbol(image.name, pixels, foreground.value_or(QColor(foregroundOn(scheme))));
}

ColorScheme schemeOf(const QColor& background) {
    constexpr double middle = 0.18;  // of luminance: as far from white as from black in contrast
    const auto linear = [](float part) {
        return part <= 0.04045F ? part / 12.92F : std::pow((part + 0.055F) / 1.055F, 2.4F);
    };
    const double luminance = 0.2126 * static_cast<double>(linear(background.redF())) +
                             0.7152 * static_cast<double>(linear(background.greenF())) +
                             0.0722 * static_cast<double>(linear(background.blueF()));
    return luminance > middle ? ColorScheme::light : ColorScheme::dark;
}

std::string statusIconName(const SymbolImage& image) {
    static constexpr std::pair<std::string_view, const char*> names[] = {
        {"circle", "purlock-idle-symbolic"},
        {"questionmark.circle", "purlock-unknown-symbolic"},
    };
    if (!image.isTemplate()) return {};
    for (const auto& [symbol, name] : names) {
        const QString file =
            QStringLiteral("icons/hicolor/symbolic/apps/") + QLatin1StringView(name) + ".svg";
        const bool isThis = symbol == image.name;
        if (isThis && !QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty()) {
            return name;
        }
    }
    return {};
}

std::vector<NotifierPixmap> statusPixmaps(const SymbolImage& image, ColorScheme scheme) {
    std::vector<NotifierPixmap> pixmaps;
    if (!hasSymbol(image.name)) return pixmaps;
    for (const int pixels : iconPixels) {
        pixmaps.push_back(notifierPixmap(statusIcon(image, pixels, std::nullopt, scheme)));
    }
    return pixmaps;
}

}  // namespace purlock::host_linux
