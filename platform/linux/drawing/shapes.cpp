#include "platform/linux/drawing/shapes.h"

#include <QEasingCurve>
#include <QPainter>
#include <cmath>

#include "platform/linux/drawing/symbols.h"
#include "platform/linux/drawing/view_style.h"

namespace purlock::host_linux {

namespace {

/// The curve that style sheets call "ease-out".
QEasingCurve easeOut() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({0, 0}, {0.58, 1}, {1, 1});
    return curve;
}

/// The pulse fades most of the time, and each of its frames wakes this program and the X server a few times:
/// no more of them than a dot of a few pixels needs to fade smoothly.
constexpr int betweenFrames = 50;  // milliseconds

int pixels(double points) {
    return static_cast<int>(std::ceil(points));
}

}  // namespace

void Drawing::setWords(const QString& name, const QString& help) {
    if (name != accessibleName()) {
        setText(name);
        setAccessibleName(name);
    }
    const QString tip = toolTipText(help);
    if (tip != toolTip()) setToolTip(tip);
}

void SymbolDrawing::show(const Symbol& content) {
    if (content_ == content) return;
    content_ = content;
    const QSize size =
        symbolImage(content.name, content.font.size, content.font.weight, qtColor(content.color), 1).size();
    setFixedSize(size.isEmpty() ? QSize(pixels(content.font.size), pixels(content.font.size)) : size);
    update();
}

void SymbolDrawing::paintEvent(QPaintEvent* /*event*/) {
    if (!content_) return;
    QPainter painter(this);
    // The scale of the device that is painted on, which may be a picture instead of the screen.
    const double ratio = painter.deviceTransform().m11();
    const QImage image = symbolImage(content_->name, content_->font.size, content_->font.weight,
                                     qtColor(content_->color), ratio);
    if (image.isNull()) return;
    const QSizeF size = image.deviceIndependentSize();
    painter.drawImage(QPointF((width() - size.width()) / 2, (height() - size.height()) / 2), image);
}

void CircleDrawing::show(const Circle& content) {
    if (content_ == content) return;
    const bool appears = !content_;
    content_ = content;
    setFixedSize(pixels(content.diameter), pixels(content.diameter));
    if (content.animation && !appears && isVisible()) {
        fadeTo(content.opacity, *content.animation);
    } else {
        fading_.stop();
        opacity_ = content.opacity;
    }
    update();
}

void CircleDrawing::fadeTo(double opacity, const EaseOut& animation) {
    fading_.stop();
    fading_.disconnect(this);
    const double start = opacity_;
    connect(&fading_, &QTimeLine::valueChanged, this, [this, start, opacity](double progress) {
        opacity_ = start + (opacity - start) * progress;
        update();
    });
    fading_.setEasingCurve(easeOut());
    fading_.setDuration(static_cast<int>(animation.seconds * 1000));
    fading_.setUpdateInterval(betweenFrames);
    fading_.start();
}

void CircleDrawing::paintEvent(QPaintEvent* /*event*/) {
    if (!content_) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(opacity_);
    QRectF outline(0, 0, content_->diameter, content_->diameter);
    outline.moveCenter(QRectF(rect()).center());
    painter.setPen(Qt::NoPen);
    if (content_->fill) {
        painter.setBrush(qtColor(*content_->fill));
        painter.drawEllipse(outline);
    }
    if (content_->stroke) {
        // Inside the frame by half a line: half of a stroke on the outline would be cut off, here and, in a
        // badge at the left edge of its row, at the edges of the boxes around it.
        const double half = content_->stroke->width / 2;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(qtColor(content_->stroke->color), content_->stroke->width));
        painter.drawEllipse(outline.adjusted(half, half, -half, -half));
    }
}

void Rule::show(const Bar& content) {
    joinsCircles_ = content.joinsCircles;
    setFixedWidth(pixels(content.width));
    if (content.height) {
        setFixedHeight(pixels(*content.height));
    } else {
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    }
    setColor(qtColor(content.color));
}

void Rule::show(const Background& content) {
    setFixedHeight(1);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setColor(qtColor(content.color));
}

void Rule::setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    update();
}

void Rule::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), color_);
}

}  // namespace purlock::host_linux
