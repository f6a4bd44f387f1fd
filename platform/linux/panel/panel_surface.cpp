#include "platform/linux/panel/panel_surface.h"

#include <QBackingStore>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <utility>

#include "platform/linux/panel/scroll_view.h"
#include "ui/view_parts.h"

namespace purlock::host_linux {

namespace {

constexpr int deepestTree = 12;  // of views, with some to spare

}  // namespace

PanelSurface::PanelSurface(PanelWindowEvents events, WindowKind kind)
    : events_(std::move(events)), tree_(events_.onAction) {
    // Compositors give an unmanaged window the keyboard only where it is no utility, as a tool is.
    const auto flags =
        kind == WindowKind::managed ? Qt::WindowFlags(Qt::Tool) : Qt::Window | Qt::X11BypassWindowManagerHint;
    setWindowFlags(flags | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setWindowTitle(QStringLiteral("Purlock"));
    setAttribute(Qt::WA_QuitOnClose, false);
    // A visual with an alpha channel, which is without effect where nothing composites.
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::ClickFocus);
}

void PanelSurface::setContent(const View& content) {
    View fitted = content;
    const QRect panel = panelRect();
    fitted.frame = Size{static_cast<double>(panel.width()), static_cast<double>(panel.height())};
    root_ = tree_.show(fitted, this);
    root_->move(panel.topLeft());
    root_->show();
    if (isVisible()) settleLayout();
}

void PanelSurface::setPanel(const QSize& size, const PanelEdge& edge) {
    edge_ = edge;
    setFixedSize(size + QSize(2 * edge.shadow, 2 * edge.shadow));
    placeRoot();
}

QRect PanelSurface::panelRect() const {
    return rect().adjusted(edge_.shadow, edge_.shadow, -edge_.shadow, -edge_.shadow);
}

void PanelSurface::placeRoot() {
    if (root_ == nullptr) return;
    root_->move(panelRect().topLeft());
    root_->setFixedSize(panelRect().size());
}

void PanelSurface::releaseDrawing() {
    if (QBackingStore* const drawing = backingStore()) drawing->resize(QSize(1, 1));
}

void PanelSurface::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeRoot();
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
    painter.setClipRect(event->rect());
    drawPanelGround(painter, panelRect(), edge_);
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
