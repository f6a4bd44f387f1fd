#include "platform/linux/panel/scroll_view.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionSlider>
#include <QWheelEvent>
#include <algorithm>

#include "platform/linux/drawing/view_style.h"

namespace purlock::host_linux {

namespace {

constexpr int barWidth = 8;
constexpr int glideMilliseconds = 140;
constexpr int notch = 60;  // points a notch of the wheel scrolls, and an arrow key
constexpr int beyondFocus = 16;

/// A rounded handle without a ground or buttons.
class SlimBar final : public QScrollBar {
  public:
    explicit SlimBar(QWidget* parent) : QScrollBar(Qt::Vertical, parent) {}

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        const int range = maximum() - minimum() + pageStep();
        if (maximum() <= minimum() || range <= 0) return;
        const double scale = static_cast<double>(height()) / range;
        const QRectF handle(2, (value() - minimum()) * scale + 2, width() - 4,
                            std::max(24.0, pageStep() * scale) - 4);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(qtColor(white(isSliderDown() ? 0.5 : 0.3)));
        painter.drawRoundedRect(handle, 2, 2);
    }
};

}  // namespace

ScrollView::ScrollView(QWidget* parent)
    : QScrollArea(parent), bar_(new SlimBar(this)), gliding_(verticalScrollBar(), "value") {
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);  // the slim one stands in for it
    setFocusPolicy(Qt::NoFocus);
    viewport()->setAutoFillBackground(false);
    verticalScrollBar()->setSingleStep(notch / 3);
    gliding_.setDuration(glideMilliseconds);
    gliding_.setEasingCurve(QEasingCurve::OutCubic);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, bar_, &QScrollBar::setValue);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this](int minimum, int maximum) {
        bar_->setRange(minimum, maximum);
        bar_->setPageStep(verticalScrollBar()->pageStep());
        bar_->setVisible(maximum > minimum);
    });
    connect(bar_, &QScrollBar::valueChanged, verticalScrollBar(), &QScrollBar::setValue);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget* /*before*/, QWidget* now) { showFocus(now); });
}

/// Scrolls to the control that has the keyboard's focus.
void ScrollView::showFocus(QWidget* focused) {
    if (focused == nullptr || widget() == nullptr || !widget()->isAncestorOf(focused)) return;
    gliding_.stop();
    ensureWidgetVisible(focused, 0, beyondFocus);
}

void ScrollView::scrollToTop() {
    gliding_.stop();
    verticalScrollBar()->setValue(verticalScrollBar()->minimum());
}

bool ScrollView::scrollByKey(const QKeyEvent& key) {
    const bool shifted = key.modifiers().testFlag(Qt::ShiftModifier);
    const int page = verticalScrollBar()->pageStep() - notch;  // some of what was seen stays
    const int from = gliding_.state() == QAbstractAnimation::Running ? gliding_.endValue().toInt()
                                                                     : verticalScrollBar()->value();
    switch (key.key()) {
        case Qt::Key_Up:
            glideTo(from - notch);
            return true;
        case Qt::Key_Down:
            glideTo(from + notch);
            return true;
        case Qt::Key_PageUp:
            glideTo(from - page);
            return true;
        case Qt::Key_PageDown:
            glideTo(from + page);
            return true;
        case Qt::Key_Space:
            glideTo(shifted ? from - page : from + page);
            return true;
        case Qt::Key_Home:
            glideTo(verticalScrollBar()->minimum());
            return true;
        case Qt::Key_End:
            glideTo(verticalScrollBar()->maximum());
            return true;
        default:
            return false;
    }
}

void ScrollView::keyPressEvent(QKeyEvent* event) {
    if (scrollByKey(*event)) {
        event->accept();
    } else {
        event->ignore();
    }
}

void ScrollView::glideTo(int value) {
    const int to = std::clamp(value, verticalScrollBar()->minimum(), verticalScrollBar()->maximum());
    gliding_.stop();
    gliding_.setStartValue(verticalScrollBar()->value());
    gliding_.setEndValue(to);
    gliding_.start();
}

void ScrollView::setContent(QWidget* content) {
    if (widget() == content) return;
    setWidget(content);
    content->setAutoFillBackground(false);
    content->installEventFilter(this);
    layOutContent();
}

bool ScrollView::eventFilter(QObject* watched, QEvent* event) {
    // The content's layout asks for another height.
    if (watched == widget() && event->type() == QEvent::LayoutRequest) layOutContent();
    return QScrollArea::eventFilter(watched, event);
}

void ScrollView::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    layOutContent();
    placeBar();
}

void ScrollView::layOutContent() {
    if (!widget()) return;
    const int width = viewport()->width();
    const int height =
        widget()->hasHeightForWidth() ? widget()->heightForWidth(width) : widget()->sizeHint().height();
    if (widget()->size() != QSize(width, height)) widget()->resize(width, height);
}

void ScrollView::placeBar() {
    bar_->setGeometry(width() - barWidth, 0, barWidth, height());
    bar_->raise();
}

void ScrollView::wheelEvent(QWheelEvent* event) {
    const QPoint notches = event->angleDelta();
    if (!event->pixelDelta().isNull() || notches.y() == 0 || notches.y() % 120 != 0) {
        QScrollArea::wheelEvent(event);
        return;
    }
    const bool gliding = gliding_.state() == QAbstractAnimation::Running;
    const int from = gliding ? gliding_.endValue().toInt() : verticalScrollBar()->value();
    glideTo(from - notches.y() / 120 * notch);
    event->accept();
}

}  // namespace purlock::host_linux
