#include "platform/linux/desktop/panel_surface.h"

#include <QBackingStore>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/linux/desktop/scroll_view.h"
#include "platform/linux/desktop/view_style.h"
#include "ui/view_parts.h"

namespace purlock::host_linux {

namespace {

constexpr int deepestTree = 12;  // of views, with some to spare
constexpr Color ground{0.145, 0.145, 0.155, 1};

/// A point wide, and a whole number of device pixels on every side, whatever the scale.
void drawEdge(QPainter& painter, const QRectF& rect) {
    const double ratio = painter.deviceTransform().m11();
    const double width = std::max(1.0, std::floor(ratio)) / ratio;
    const QRectF inner = rect.adjusted(width, width, -width, -width);
    QPainterPath edge;
    edge.addRect(rect);
    edge.addRect(inner);  // odd and even: what lies between the two
    painter.fillPath(edge, qtColor(white(0.12)));
}

}  // namespace

PanelSurface::PanelSurface(PanelWindowEvents events, WindowKind kind)
    : events_(std::move(events)), tree_(events_.onAction) {
    // Compositors give an unmanaged window the keyboard only where it is no utility, as a tool is.
    const auto flags =
        kind == WindowKind::managed ? Qt::WindowFlags(Qt::Tool) : Qt::Window | Qt::X11BypassWindowManagerHint;
    setWindowFlags(flags | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setWindowTitle(QStringLiteral("Purlock"));
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::ClickFocus);
}

void PanelSurface::setContent(const View& content) {
    View fitted = content;
    fitted.frame = Size{static_cast<double>(width()), static_cast<double>(height())};
    root_ = tree_.show(fitted, this);
    root_->move(0, 0);
    root_->show();
    if (isVisible()) settleLayout();
}

void PanelSurface::releaseDrawing() {
    if (QBackingStore* const drawing = backingStore()) drawing->resize(QSize(1, 1));
}

void PanelSurface::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (root_) root_->setFixedSize(size());
}

/// Layouts inform one another by posted events, from level to level. All of them are let through before
/// anything is painted, so that nobody sees a text in the place of the one before it.
void PanelSurface::settleLayout() {
    for (int level = 0; level < deepestTree; ++level) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    }
}

void PanelSurface::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    settleLayout();
    if (auto* const content = dynamic_cast<ScrollView*>(root_)) content->scrollToTop();
    setFocus();  // the first control gets it from the Tab key, not from the click that opened the panel
}

void PanelSurface::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), qtColor(ground));
    drawEdge(painter, rect());
}

void PanelSurface::keyPressEvent(QKeyEvent* event) {
    auto* const content = dynamic_cast<ScrollView*>(root_);
    if (event->key() == Qt::Key_Escape) {
        events_.onCancel();
    } else if (content == nullptr || !content->scrollByKey(*event)) {
        QWidget::keyPressEvent(event);
    }
}

/// The desktop's own way of closing a window hides it, as Escape does.
void PanelSurface::closeEvent(QCloseEvent* event) {
    event->ignore();
    events_.onCancel();
}

}  // namespace purlock::host_linux
