#include "platform/linux/desktop/box.h"

#include <QGridLayout>
#include <QPainter>
#include <algorithm>

#include "platform/linux/desktop/shapes.h"
#include "platform/linux/desktop/view_style.h"

namespace purlock::host_linux {

namespace {

/// Whether a child takes the whole height of its row: bars that have no height of their own.
Qt::Alignment alignment(const QBoxLayout& layout, const QWidget& child) {
    const bool inRow = layout.direction() == QBoxLayout::LeftToRight;
    const bool fills = child.sizePolicy().verticalPolicy() == QSizePolicy::Expanding;
    return inRow && !fills ? Qt::AlignVCenter : Qt::Alignment();
}

}  // namespace

Box::Box(QBoxLayout::Direction direction, QWidget* parent)
    : QWidget(parent), layout_(new QBoxLayout(direction, this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(0);
}

void Box::setPadding(const Padding& padding) {
    const int across = static_cast<int>(padding.horizontal);
    const int down = static_cast<int>(padding.vertical);
    padding_ = QMargins(across, down, across, down);
    showMargins();
}

void Box::showMargins() {
    const QMargins margins = padding_ + outset_;
    if (margins != layout_->contentsMargins()) layout_->setContentsMargins(margins);
}

void Box::setBackground(const std::optional<Background>& background) {
    if (background == background_) return;
    background_ = background;
    update();
}

void Box::arrange(const std::vector<QWidget*>& children) {
    QMargins reached;
    for (int i = 0; i < static_cast<int>(children.size()); ++i) {
        QWidget* child = children[static_cast<std::size_t>(i)];
        const QMargins outset = outsetOf(*child);
        reached = reached | outset;
        const auto* item = static_cast<const OutsetItem*>(layout_->itemAt(i));
        if (item && item->widget() == child && item->outset() == outset) continue;
        layout_->removeWidget(child);
        auto* place = new OutsetItem(child, outset);
        place->setAlignment(alignment(*layout_, *child));
        layout_->insertItem(i, place);
        child->show();
    }
    const QMargins beyond = (reached - padding_) | QMargins();
    if (beyond == outset_) return;
    outset_ = beyond;
    showMargins();
}

namespace {

/// The first widget of a kind among the children of a row and theirs; null when there is none.
template <typename Widget>
const Widget* firstIn(const QLayoutItem* row) {
    if (row == nullptr || row->widget() == nullptr) return nullptr;
    for (const QWidget* child : row->widget()->findChildren<QWidget*>()) {
        if (const auto* found = dynamic_cast<const Widget*>(child)) return found;
    }
    return nullptr;
}

}  // namespace

/// From the bars that join circles to the circles of the rows above and below.
void Box::drawLinks() {
    for (int index = 0; index < layout_->count(); ++index) {
        const auto* bar = firstIn<Rule>(layout_->itemAt(index));
        if (bar == nullptr || !bar->joinsCircles()) continue;
        QPainter painter(this);
        QColor faint = bar->color();
        faint.setAlphaF(0.35F);
        const QRect place(bar->mapTo(this, QPoint()), bar->size());
        if (const auto* above = firstIn<CircleDrawing>(layout_->itemAt(index - 1))) {
            const int from = above->mapTo(this, QPoint(0, above->height())).y();
            painter.fillRect(QRect(place.left(), from, place.width(), place.top() - from), faint);
        }
        if (const auto* below = firstIn<CircleDrawing>(layout_->itemAt(index + 1))) {
            const int to = below->mapTo(this, QPoint()).y();
            painter.fillRect(QRect(place.left(), place.bottom() + 1, place.width(), to - place.bottom() - 1),
                             faint);
        }
    }
}

void Box::paintEvent(QPaintEvent* /*event*/) {
    if (layout_->direction() == QBoxLayout::TopToBottom) drawLinks();
    if (!background_) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(qtColor(background_->color));
    painter.drawRoundedRect(rect().marginsRemoved(outset_), background_->cornerRadius,
                            background_->cornerRadius);
}

Stack::Stack(QWidget* parent) : QWidget(parent) {
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
}

void Stack::arrange(const std::vector<QWidget*>& children) {
    auto* grid = static_cast<QGridLayout*>(layout());
    for (QWidget* child : children) {
        if (grid->indexOf(child) >= 0) continue;
        grid->addWidget(child, 0, 0, Qt::AlignCenter);
        child->show();
        child->raise();
    }
}

}  // namespace purlock::host_linux
