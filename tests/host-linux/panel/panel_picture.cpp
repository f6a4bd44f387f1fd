#include "tests/host-linux/panel/panel_picture.h"

#include <QApplication>
#include <QPainter>
#include <cmath>

#include "platform/linux/drawing/menu_style.h"
#include "platform/linux/panel/panel_surface.h"

namespace purlock::test {

void usePictureFont() {
    host_linux::applyDarkLook();
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setHintingPreference(QFont::PreferNoHinting);
    QApplication::setFont(font);
}

QImage panelPicture(const View& view, double scale, const host_linux::PanelEdge& edge) {
    host_linux::PanelSurface surface({[](const Action&) {}, [] {}});
    surface.setPanel({360, 600}, edge);
    surface.setContent(view);
    surface.setAttribute(Qt::WA_DontShowOnScreen);
    surface.show();
    QImage image(static_cast<int>(std::lround(surface.width() * scale)),
                 static_cast<int>(std::lround(surface.height() * scale)),
                 edge.isRounded ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    surface.render(&image);
    return image;
}

std::string pictureName(const std::string& state, double scale) {
    return state + "@" + std::to_string(std::lround(scale)) + "x.png";
}

}  // namespace purlock::test
