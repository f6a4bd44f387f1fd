#include "platform/linux/desktop/scroll_view.h"

#include <QEvent>
#include <QPainter>
#include <QStyleOptionSlider>
#include <QWheelEvent>
#include <algorithm>

#include "platform/linux/desktop/view_style.h"

namespace purlock::host_linux {

namespace {

constexpr int barWidth = 8;
constexpr int glideMilliseconds = 140;
constexpr int notch = 60;  // points a notch of the wheel scrolls

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
    const int to = std::clamp(from - notches.y() / 120 * notch, verticalScrollBar()->minimum(),
                              verticalScrollBar()->maximum());
    gliding_.stop();
    gliding_.setStartValue(verticalScrollBar()->value());
    gliding_.setEndValue(to);
    gliding_.start();
    event->accept();
}

}  // namespace purlock::host_linux
