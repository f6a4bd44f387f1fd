#pragma once

#include <QProxyStyle>

namespace purlock::host_linux {

/// Menus and tool tips as the panel is: its ground, its faint edge, its sizes of text, and a lighter row for
/// the entry that the pointer is on. Everything else is the style that it is made of.
class MenuStyle final : public QProxyStyle {
  public:
    MenuStyle();

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
};

/// Makes menus and tool tips as dark as the panel, independent of the desktop's colours. Once, after the Qt
/// application object is made. Main thread.
void applyDarkLook();

}  // namespace purlock::host_linux
