#include "platform/linux/panel/box.h"

#include <QGridLayout>
#include <QPainter>
#include <algorithm>

#include "platform/linux/drawing/shapes.h"
#include "platform/linux/drawing/view_style.h"

namespace purlock::host_linux {

namespace {

/// True if a child takes the whole height of its row: bars that have no height of their own.
Qt::Alignment alignment(const QBoxLayout& layout, const QWidget& child) {
    const bool inRow = layout.direction() == QBoxLayout::LeftToRight;
    const bool fills = child.sizePolicy().verticalPolicy() == QSizePolicy::Expanding;
    return inRow && !fills ? Qt::AlignVCenter : Qt::Alignment();
}

QMargins outsetIn(const QLayoutItem& item) {
    const auto* place = dynamic_cast<const OutsetItem*>(&item);
    return place != nullptr ? place->outset() : QMargins();
}

}  // namespace

Box::Box(QBoxLayout::Direction direction, QWidget* parent)
    : QWidget(parent), layout_(new QBoxLayout(direction, this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(0);
}

/// The layout would measure everything anew, even for the spacing that it has.
void Box::setSpacing(double spacing) {
    const int pixels = static_cast<int>(spacing);
    if (pixels != layout_->spacing()) layout_->setSpacing(pixels);
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
        QLayoutItem* item = layout_->itemAt(i);
        if (item && item->widget() == child && outsetIn(*item) == outset) continue;
        layout_->removeWidget(child);
        if (outset.isNull()) {
            layout_->insertWidget(i, child, 0, alignment(*layout_, *child));  // remembers its sizes
        } else {
            auto* place = new OutsetItem(child, outset);
            place->setAlignment(alignment(*layout_, *child));
            layout_->insertItem(i, place);
        }
        child->show();
    }
    findLinks();
    const QMargins beyond = (reached - padding_) | QMargins();
    if (beyond == outset_) return;
    outset_ = beyond;
    showMargins();
}

namespace {

/// The first widget of a kind that stands directly in a row, or in what stands there; null when there is
/// none.
template <typename Widget>
const Widget* firstIn(const QLayoutItem* row) {
    const QLayout* places = row != nullptr && row->widget() != nullptr ? row->widget()->layout() : nullptr;
    for (int index = 0; places != nullptr && index < std::min(places->count(), 2); ++index) {
        const QLayoutItem* place = places->itemAt(index);
        if (const auto* found = dynamic_cast<const Widget*>(place->widget())) return found;
        if (const auto* found = firstIn<Widget>(place)) return found;
    }
    return nullptr;
}

}  // namespace

/// Bars that join circles are looked for when the children change, not whenever something is painted.
void Box::findLinks() {
    links_.clear();
    if (layout_->direction() != QBoxLayout::TopToBottom) return;
    for (int index = 0; index < layout_->count(); ++index) {
        const auto* bar = firstIn<Rule>(layout_->itemAt(index));
        if (bar == nullptr || !bar->joinsCircles()) continue;
        links_.push_back({bar, firstIn<CircleDrawing>(layout_->itemAt(index - 1)),
                          firstIn<CircleDrawing>(layout_->itemAt(index + 1))});
    }
}

/// From the bars to the circles of the rows above and below.
void Box::drawLinks() {
    QPainter painter(this);
    for (const Link& link : links_) {
        QColor faint = link.bar->color();
        faint.setAlphaF(0.35F);
        const QRect place(link.bar->mapTo(this, QPoint()), link.bar->size());
        if (link.above != nullptr) {
            const int from = link.above->mapTo(this, QPoint(0, link.above->height())).y();
            painter.fillRect(QRect(place.left(), from, place.width(), place.top() - from), faint);
        }
        if (link.below != nullptr) {
            const int to = link.below->mapTo(this, QPoint()).y();
            painter.fillRect(QRect(place.left(), place.bottom() + 1, place.width(), to - place.bottom() - 1),
                             faint);
        }
    }
}

void Box::paintEvent(QPaintEvent* /*event*/) {
    if (!links_.empty()) drawLinks();
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
