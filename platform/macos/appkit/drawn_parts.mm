// The elements without children, and what all elements share.

#include <QuartzCore/QuartzCore.h>

#include <algorithm>

#include "platform/macos/appkit/colors.h"
#include "platform/macos/appkit/drawn_content.h"
#include "platform/macos/foundation/texts.h"
#include "ui/accessible_words.h"

/// A circle or a bar, drawn to its edges.
@interface PurlockShapeView : NSView
- (void)setContent:(purlock::Content)content;
@end

@implementation PurlockShapeView {
    purlock::Content content_;
}

- (void)setContent:(purlock::Content)content {
    content_ = std::move(content);
    self.needsDisplay = YES;
}

- (void)drawRect:(NSRect)dirtyRect {
    if (const auto* const bar = std::get_if<purlock::Bar>(&content_)) {
        [purlock::host_macos::colorOf(bar->color) setFill];
        [[NSBezierPath bezierPathWithRect:self.bounds] fill];
    }
    const auto* const circle = std::get_if<purlock::Circle>(&content_);
    if (circle == nullptr) return;
    // A stroke lies on both sides of its line, and nothing is drawn beyond the bounds.
    const CGFloat margin = circle->stroke ? circle->stroke->width / 2 : 0;
    NSBezierPath* const path =
        [NSBezierPath bezierPathWithOvalInRect:NSInsetRect(self.bounds, margin, margin)];
    if (circle->fill) {
        [purlock::host_macos::colorOf(*circle->fill) setFill];
        [path fill];
    }
    if (circle->stroke) {
        path.lineWidth = circle->stroke->width;
        [purlock::host_macos::colorOf(circle->stroke->color) setStroke];
        [path stroke];
    }
}

@end

namespace purlock::host_macos {

void useConstraints(NSView* view) {
    view.translatesAutoresizingMaskIntoConstraints = NO;
}

void setFixedSize(NSView* view, double width, double height) {
    [NSLayoutConstraint activateConstraints:@[
        [view.widthAnchor constraintEqualToConstant:width],
        [view.heightAnchor constraintEqualToConstant:height],
    ]];
}

void pinEdges(NSView* inner, NSView* outer, const Padding& padding) {
    [NSLayoutConstraint activateConstraints:@[
        [inner.topAnchor constraintEqualToAnchor:outer.topAnchor constant:padding.vertical],
        [outer.bottomAnchor constraintEqualToAnchor:inner.bottomAnchor constant:padding.vertical],
        [inner.leadingAnchor constraintEqualToAnchor:outer.leadingAnchor constant:padding.horizontal],
        [outer.trailingAnchor constraintEqualToAnchor:inner.trailingAnchor constant:padding.horizontal],
    ]];
}

namespace {

/// A drawing without a name is an ornament, and nothing to a screen reader.
void nameDrawing(NSView* drawing, const View& view) {
    const std::string name = accessibleWords(view).name;
    [drawing setAccessibilityElement:!name.empty()];
    if (!name.empty()) [drawing setAccessibilityLabel:makeNSString(name)];
}

class DrawnText final : public DrawnContent {
  public:
    explicit DrawnText(const View& view) : field_(makeField(std::get<Text>(view.content))) {
        useConstraints(field_);
        field_.selectable = NO;
        [field_ setContentHuggingPriority:firm forOrientation:NSLayoutConstraintOrientationHorizontal];
        [field_ setContentHuggingPriority:firm forOrientation:NSLayoutConstraintOrientationVertical];
        [field_ setContentCompressionResistancePriority:soft
                                         forOrientation:NSLayoutConstraintOrientationHorizontal];
        show(view);
    }

    NSView* view() const override { return field_; }

    void show(const View& next) override {
        const auto& text = std::get<Text>(next.content);
        field_.stringValue = makeNSString(text.text);  // plain, never markup
        field_.font = fontOf(text.font);
        field_.textColor = colorOf(text.color);
        if (!next.label.empty()) [field_ setAccessibilityLabel:makeNSString(accessibleWords(next).name)];
    }

  private:
    static NSTextField* makeField(const Text& text) {
        if (text.lines == Lines::asNeeded) {
            // As high as its text at the width that it is given: AppKit sees to that, as long as no width is
            // named.
            NSTextField* const paragraph = [NSTextField wrappingLabelWithString:@""];
            paragraph.lineBreakMode = NSLineBreakByWordWrapping;
            return paragraph;
        }
        NSTextField* const line = [NSTextField labelWithString:@""];
        line.lineBreakMode = NSLineBreakByTruncatingTail;
        line.usesSingleLineMode = YES;  // a line feed in a title begins no second line
        line.maximumNumberOfLines = 1;
        return line;
    }

    NSTextField* const field_;
};

class DrawnSymbol final : public DrawnContent {
  public:
    explicit DrawnSymbol(const View& view) {
        useConstraints(image_);
        [image_ setContentHuggingPriority:firm forOrientation:NSLayoutConstraintOrientationHorizontal];
        show(view);
    }

    NSView* view() const override { return image_; }

    void show(const View& next) override {
        const auto& symbol = std::get<Symbol>(next.content);
        image_.image = symbolNamed(symbol.name, nil, symbol.font.size, symbol.font.weight);
        image_.contentTintColor = colorOf(symbol.color);
        nameDrawing(image_, next);
    }

  private:
    NSImageView* const image_ = [[NSImageView alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)];
};

class DrawnShape final : public DrawnContent {
  public:
    explicit DrawnShape(const View& view) : view_(makeView(view.content)) {
        useConstraints(view_);
        show(view);
    }

    NSView* view() const override { return view_; }

    void show(const View& next) override {
        if (![view_ isKindOfClass:[PurlockShapeView class]]) return;
        [static_cast<PurlockShapeView*>(view_) setContent:next.content];
        nameDrawing(view_, next);
        [view_ setAccessibilityRole:NSAccessibilityImageRole];
        if (const auto* const circle = std::get_if<Circle>(&next.content)) showOpacity(*circle);
    }

  private:
    static NSView* makeView(const Content& content) {
        const NSRect nowhere = NSMakeRect(0, 0, 0, 0);
        if (std::holds_alternative<Divider>(content)) {
            NSBox* const divider = [[NSBox alloc] initWithFrame:nowhere];
            divider.boxType = NSBoxSeparator;
            return divider;
        }
        NSView* const view = [[PurlockShapeView alloc] initWithFrame:nowhere];
        if (const auto* const circle = std::get_if<Circle>(&content)) {
            setFixedSize(view, circle->diameter, circle->diameter);
        } else if (const auto* const space = std::get_if<Space>(&content)) {
            setFixedSize(view, space->width, space->height);
        } else if (const auto* const bar = std::get_if<Bar>(&content)) {
            // A bar of no height of its own is as high as its row: the row sees to that.
            if (bar->height) {
                setFixedSize(view, bar->width, *bar->height);
            } else {
                [NSLayoutConstraint
                    activateConstraints:@[ [view.widthAnchor constraintEqualToConstant:bar->width] ]];
            }
        } else {
            [view setContentHuggingPriority:yielding forOrientation:NSLayoutConstraintOrientationHorizontal];
        }
        return view;
    }

    void showOpacity(const Circle& circle) {
        const double opacity = circle.opacity;
        const bool isFirst = !opacity_;
        if (opacity_ == opacity) return;
        opacity_ = opacity;
        NSView* const view = view_;
        if (isFirst || !circle.animation) {
            view.alphaValue = opacity;
            return;
        }
        const double seconds = circle.animation->seconds;
        [NSAnimationContext runAnimationGroup:^(NSAnimationContext* context) {
          context.duration = seconds;
          context.timingFunction = [CAMediaTimingFunction functionWithName:kCAMediaTimingFunctionEaseOut];
          [view animator].alphaValue = opacity;
        }];
    }

    NSView* const view_;
    std::optional<double> opacity_;  // that is shown, or on its way
};

}  // namespace

std::unique_ptr<DrawnContent> drawnText(const View& view) {
    return std::make_unique<DrawnText>(view);
}

std::unique_ptr<DrawnContent> drawnSymbol(const View& view) {
    return std::make_unique<DrawnSymbol>(view);
}

std::unique_ptr<DrawnContent> drawnShape(const View& view) {
    return std::make_unique<DrawnShape>(view);
}

}  // namespace purlock::host_macos
