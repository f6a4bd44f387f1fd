#include "platform/linux/panel/text_label.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <functional>

#include "platform/linux/drawing/view_style.h"

namespace purlock::host_linux {

namespace {

/// Breaks `text` into lines of at most `width` and hands out each; returns the height of all.
double layOut(const QString& text, const QFont& font, double width,
              const std::function<void(const QTextLine&)>& onLine) {
    QTextLayout layout(text, font);
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    double height = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, height});
        height += line.height();
        onLine(line);
    }
    layout.endLayout();
    return height;
}

}  // namespace

void TextLabel::show(const Text& content, const QString& help, const QString& name) {
    const QString shown = lineText(content.text);
    const QFont shownFont = qtFont(content.font);
    const QColor shownColor = qtColor(content.color);
    const bool wraps = content.lines == Lines::asNeeded;
    if (name != accessibleName()) setAccessibleName(name);
    const bool sameShape = shown == text() && shownFont == font() && wraps == wraps_;
    if (sameShape && shownColor == color_ && help == help_) return;
    help_ = help;
    color_ = shownColor;
    if (!sameShape) {
        wraps_ = wraps;
        setFont(shownFont);
        setText(shown);
        updateGeometry();
    }
    updateToolTip();
    update();
}

int TextLabel::naturalWidth() const {
    return static_cast<int>(std::ceil(QFontMetricsF(font()).horizontalAdvance(text())));
}

int TextLabel::wrappedHeight(int width) const {
    const double height = layOut(text(), font(), std::max(1, width), [](const QTextLine&) {});
    return std::max(fontMetrics().height(), static_cast<int>(std::ceil(height)));
}

QSize TextLabel::sizeHint() const {
    return {naturalWidth() + 1, fontMetrics().height()};
}

QSize TextLabel::minimumSizeHint() const {
    const int ellipsis = fontMetrics().horizontalAdvance(QChar(0x2026));
    return {std::min(naturalWidth() + 1, 2 * ellipsis), fontMetrics().height()};
}

int TextLabel::heightForWidth(int width) const {
    return wraps_ ? wrappedHeight(width) : fontMetrics().height();
}

void TextLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(color_);
    if (wraps_) {
        layOut(text(), font(), std::max(1, width()), [&painter](const QTextLine& line) {
            line.draw(&painter, {0, 0});
        });
        return;
    }
    const QString line = fontMetrics().elidedText(text(), Qt::ElideRight, width());
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine, line);
}

void TextLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    updateToolTip();
}

void TextLabel::updateToolTip() {
    const bool cutOff = !wraps_ && naturalWidth() > width();
    const QString wanted = toolTipText(!help_.isEmpty() ? help_ : cutOff ? text() : QString());
    if (wanted != toolTip()) setToolTip(wanted);
}

}  // namespace purlock::host_linux
