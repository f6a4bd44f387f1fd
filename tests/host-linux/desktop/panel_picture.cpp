#include "tests/host-linux/desktop/panel_picture.h"

#include <QApplication>
#include <QPainter>
#include <cmath>

#include "platform/linux/desktop/display.h"
#include "platform/linux/desktop/panel_surface.h"

namespace purlock::test {

void usePictureFont() {
    host_linux::applyDarkLook();
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setHintingPreference(QFont::PreferNoHinting);
    QApplication::setFont(font);
}

QImage panelPicture(const View& view, double scale) {
    host_linux::PanelSurface surface({[](const Action&) {}, [] {}});
    surface.setFixedSize(360, 600);
    surface.setContent(view);
    surface.setAttribute(Qt::WA_DontShowOnScreen);
    surface.show();
    QImage image(static_cast<int>(std::lround(360 * scale)), static_cast<int>(std::lround(600 * scale)),
                 QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    surface.render(&image);
    return image;
}

std::string pictureName(const std::string& state, double scale) {
    return state + "@" + std::to_string(std::lround(scale)) + "x.png";
}

}  // namespace purlock::test
