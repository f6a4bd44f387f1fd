#include "platform/linux/panel/view_tree.h"

#include <utility>

#include "platform/linux/panel/element.h"

namespace purlock::host_linux {

ViewTree::ViewTree(PerformAction perform) : perform_(std::move(perform)) {}

ViewTree::~ViewTree() = default;

QWidget* ViewTree::show(const View& view, QWidget* parent) {
    if (!root_ || !root_->canShow(view)) root_ = std::make_unique<Element>(view, perform_, parent);
    root_->show(view);
    orderFocus();
    return root_->widget();
}

/// The Tab key goes through the controls as they stand, not as they were made.
void ViewTree::orderFocus() {
    std::vector<QWidget*> order;
    root_->appendFocusable(order);
    if (order == focusOrder_) return;
    focusOrder_ = std::move(order);
    for (std::size_t i = 1; i < focusOrder_.size(); ++i) {
        QWidget::setTabOrder(focusOrder_[i - 1], focusOrder_[i]);
    }
}

}  // namespace purlock::host_linux
