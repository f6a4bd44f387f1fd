#include "platform/linux/tray/status_icon.h"

#include <QPainter>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "platform/linux/desktop/symbols.h"
#include "platform/linux/desktop/view_style.h"
#include "ui/view_parts.h"

namespace purlock::host_linux {

namespace {

constexpr std::array iconPixels = {16, 22, 24, 32, 48};

constexpr QRgb lightForeground = qRgb(242, 242, 242);
constexpr QRgb darkForeground = qRgb(38, 38, 38);
constexpr int edgeAlpha = 110;

struct OwnColor {
    std::string_view symbol;
    Color color;
};

/// The colours of those symbols that have colours of their own.
constexpr OwnColor ownColors[] = {
    {"checkmark.seal.fill", accentGreen},
    {"exclamationmark.triangle.fill", accentAmber},
    {"slider.horizontal.3", accentAmber},
};

std::optional<QColor> ownColorOf(const SymbolImage& image) {
    if (image.isTemplate) return std::nullopt;
    for (const auto& [symbol, color] : ownColors) {
        if (symbol == image.name) return qtColor(color);
    }
    return std::nullopt;
}

QImage withDarkEdge(const std::string& symbol, int pixels) {
    const int edge = std::max(1, pixels / 24);
    const QImage shade = squareSymbol(symbol, pixels, QColor(0, 0, 0, edgeAlpha));
    QImage result(shade.size(), QImage::Format_ARGB32_Premultiplied);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    for (int x = -edge; x <= edge; x += edge) {
        for (int y = -edge; y <= edge; y += edge) painter.drawImage(x, y, shade);
    }
    painter.drawImage(0, 0, squareSymbol(symbol, pixels, lightForeground));
    return result;
}

}  // namespace

QImage statusIcon(const SymbolImage& image, int pixels, const std::optional<QColor>& foreground,
                  ColorScheme scheme) {
    if (!hasSymbol(image.name)) return {};
    if (const auto own = ownColorOf(image)) return squareSymbol(image.name, pixels, *own);
    if (foreground) return squareSymbol(image.name, pixels, *foreground);
    switch (scheme) {
        case ColorScheme::dark:
            return squareSymbol(image.name, pixels, lightForeground);
        case ColorScheme::light:
            return squareSymbol(image.name, pixels, darkForeground);
        case ColorScheme::unknown:
            break;
    }
    return withDarkEdge(image.name, pixels);
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
