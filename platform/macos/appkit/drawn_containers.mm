// Rows, columns, overlays and the scrolled part.

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/macos/appkit/drawn_content.h"

namespace purlock::host_macos {

namespace {

using Children = std::vector<std::unique_ptr<DrawnView>>;

/// Takes the child that can become `next` out of the old ones, or makes a new one.
std::unique_ptr<DrawnView> successor(Children& old, const View& next, const OnAction& onAction) {
    const auto found =
        std::ranges::find_if(old, [&](const auto& child) { return child && child->canShow(next); });
    if (found == old.end()) return std::make_unique<DrawnView>(next, onAction);
    auto child = std::move(*found);
    child->show(next);
    return child;
}

/// The children for a new list: old ones where they fit, in their order; those without a successor leave the
/// window.
Children successors(Children& old, const std::vector<View>& next, const OnAction& onAction) {
    Children children;
    children.reserve(next.size());
    for (const View& view : next) children.push_back(successor(old, view, onAction));
    for (const auto& child : old) {
        if (child) [child->view() removeFromSuperview];
    }
    return children;
}

bool isBarAsHighAsItsRow(const View& view) {
    const auto* const bar = std::get_if<Bar>(&view.content);
    return bar != nullptr && !bar->height;
}

class DrawnStack final : public DrawnContent {
  public:
    DrawnStack(const View& view, const OnAction& onAction)
        : isRow_(std::holds_alternative<Row>(view.content)), onAction_(onAction) {
        useConstraints(stack_);
        stack_.orientation =
            isRow_ ? NSUserInterfaceLayoutOrientationHorizontal : NSUserInterfaceLayoutOrientationVertical;
        stack_.alignment = isRow_ ? NSLayoutAttributeCenterY : NSLayoutAttributeLeading;
        stack_.distribution = NSStackViewDistributionFill;
        [stack_ setHuggingPriority:soft forOrientation:NSLayoutConstraintOrientationHorizontal];
        show(view);
    }

    NSView* view() const override { return stack_; }

    void show(const View& next) override {
        stack_.spacing =
            isRow_ ? std::get<Row>(next.content).spacing : std::get<Column>(next.content).spacing;
        children_ = successors(children_, next.children, onAction_);
        std::vector<NSView*> order;
        for (const auto& child : children_) order.push_back(child->view());
        if (order == order_) return;  // arranging is not free
        for (std::size_t i = 0; i < children_.size(); ++i) place(*children_[i], i);
        order_ = std::move(order);
    }

  private:
    void place(const DrawnView& child, std::size_t index) {
        NSView* const view = child.view();
        const bool isNew = view.superview == nil;
        [stack_ insertArrangedSubview:view atIndex:static_cast<NSInteger>(index)];
        if (!isNew) return;
        if (isRow_ && isBarAsHighAsItsRow(child.shown())) {
            [NSLayoutConstraint
                activateConstraints:@[ [view.heightAnchor constraintEqualToAnchor:stack_.heightAnchor] ]];
        }
        if (isRow_) return;
        NSLayoutConstraint* const width =
            takesAvailableWidth(child.shown())
                ? [view.widthAnchor constraintEqualToAnchor:stack_.widthAnchor]
                : [view.trailingAnchor constraintLessThanOrEqualToAnchor:stack_.trailingAnchor];
        [NSLayoutConstraint activateConstraints:@[ width ]];
    }

    const bool isRow_;
    const OnAction onAction_;
    NSStackView* const stack_ = [[NSStackView alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)];
    Children children_;
    std::vector<NSView*> order_;
};

/// Over one another, each in the middle; as large as it is told, else as its first child.
class DrawnOverlay final : public DrawnContent {
  public:
    DrawnOverlay(const View& view, const OnAction& onAction) : onAction_(onAction) {
        useConstraints(view_);
        show(view);
    }

    NSView* view() const override { return view_; }

    void show(const View& next) override {
        children_ = successors(children_, next.children, onAction_);
        for (const auto& child : children_) {
            if (child->view().superview == nil) {
                centre(child->view(), child == children_.front() && !next.frame);
            }
        }
    }

  private:
    void centre(NSView* child, bool tellsSize) {
        [view_ addSubview:child];
        [NSLayoutConstraint activateConstraints:@[
            [child.centerXAnchor constraintEqualToAnchor:view_.centerXAnchor],
            [child.centerYAnchor constraintEqualToAnchor:view_.centerYAnchor],
        ]];
        if (!tellsSize) return;
        [NSLayoutConstraint activateConstraints:@[
            [view_.widthAnchor constraintEqualToAnchor:child.widthAnchor],
            [view_.heightAnchor constraintEqualToAnchor:child.heightAnchor],
        ]];
    }

    const OnAction onAction_;
    NSView* const view_ = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)];
    Children children_;
};

class DrawnScroll final : public DrawnContent {
  public:
    DrawnScroll(const View& view, const OnAction& onAction) : onAction_(onAction) {
        useConstraints(scroll_);
        scroll_.hasVerticalScroller = YES;
        scroll_.drawsBackground = NO;
        show(view);
    }

    NSView* view() const override { return scroll_; }

    void show(const View& next) override {
        children_ = successors(children_, next.children, onAction_);
        NSView* const content = children_.empty() ? nil : children_.front()->view();
        if (scroll_.documentView == content) return;
        scroll_.documentView = content;
        if (content == nil) return;
        NSView* const clip =
            scroll_.contentView;  // as wide as what is seen; its height is the content's own affair
        [NSLayoutConstraint activateConstraints:@[
            [content.topAnchor constraintEqualToAnchor:clip.topAnchor],
            [content.leadingAnchor constraintEqualToAnchor:clip.leadingAnchor],
            [content.trailingAnchor constraintEqualToAnchor:clip.trailingAnchor],
        ]];
    }

  private:
    const OnAction onAction_;
    NSScrollView* const scroll_ = [[NSScrollView alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)];
    Children children_;
};

}  // namespace

std::unique_ptr<DrawnContent> drawnStack(const View& view, const OnAction& onAction) {
    return std::make_unique<DrawnStack>(view, onAction);
}

std::unique_ptr<DrawnContent> drawnOverlay(const View& view, const OnAction& onAction) {
    return std::make_unique<DrawnOverlay>(view, onAction);
}

std::unique_ptr<DrawnContent> drawnScroll(const View& view, const OnAction& onAction) {
    return std::make_unique<DrawnScroll>(view, onAction);
}

}  // namespace purlock::host_macos
