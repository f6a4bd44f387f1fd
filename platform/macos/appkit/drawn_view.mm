#include "platform/macos/appkit/drawn_view.h"

#include <algorithm>

#include "base/overloaded.h"
#include "core/verdict.h"
#include "platform/macos/appkit/colors.h"
#include "platform/macos/appkit/drawn_content.h"
#include "platform/macos/foundation/texts.h"

/// The ground of an element: its background, with rounded corners.
@interface PurlockElementView : NSView
- (void)setGround:(std::optional<purlock::Background>)ground;
@end

@implementation PurlockElementView {
    std::optional<purlock::Background> ground_;
}

- (void)setGround:(std::optional<purlock::Background>)ground {
    ground_ = ground;
    self.needsDisplay = YES;
}

- (BOOL)isFlipped {
    return YES;
}

- (void)drawRect:(NSRect)dirtyRect {
    if (!ground_) return;
    [purlock::host_macos::colorOf(ground_->color) setFill];
    [[NSBezierPath bezierPathWithRoundedRect:self.bounds
                                     xRadius:ground_->cornerRadius
                                     yRadius:ground_->cornerRadius] fill];
}

@end

namespace purlock::host_macos {

namespace {

std::unique_ptr<DrawnContent> drawn(const View& view, const OnAction& onAction) {
    return std::visit(Overloaded{
                          [&](const Text&) { return drawnText(view); },
                          [&](const Symbol&) { return drawnSymbol(view); },
                          [&](const Circle&) { return drawnShape(view); },
                          [&](const Bar&) { return drawnShape(view); },
                          [&](const Space&) { return drawnShape(view); },
                          [&](const FlexibleSpace&) { return drawnShape(view); },
                          [&](const Divider&) { return drawnShape(view); },
                          [&](const Column&) { return drawnStack(view, onAction); },
                          [&](const Row&) { return drawnStack(view, onAction); },
                          [&](const Overlay&) { return drawnOverlay(view, onAction); },
                          [&](const Button&) { return drawnButton(view, onAction); },
                          [&](const Switch&) { return drawnSwitch(view, onAction); },
                          [&](const Menu&) { return drawnMenu(view, onAction); },
                          [&](const Scroll&) { return drawnScroll(view, onAction); },
                      },
                      view.content);
}

/// True if both have the same fixed size, or neither has one.
bool haveSameSize(const View& one, const View& other) {
    if (const auto* const circle = std::get_if<Circle>(&one.content)) {
        return circle->diameter == std::get<Circle>(other.content).diameter;
    }
    if (const auto* const bar = std::get_if<Bar>(&one.content)) {
        const auto& otherBar = std::get<Bar>(other.content);
        return bar->width == otherBar.width && bar->height == otherBar.height;
    }
    if (std::holds_alternative<Space>(one.content)) return one.content == other.content;
    if (const auto* const text = std::get_if<Text>(&one.content)) {
        return text->lines == std::get<Text>(other.content).lines;  // another class of label
    }
    return true;
}

NSString* textOrNil(const std::string& text) {
    return text.empty() ? nil : makeNSString(text);
}

}  // namespace

DrawnView::DrawnView(const View& view, const OnAction& onAction)
    : shown_(view),
      outer_([[PurlockElementView alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)]),
      content_(drawn(view, onAction)) {
    useConstraints(outer_);
    [outer_ addSubview:content_->view()];
    pinEdges(content_->view(), outer_, view.padding);
    if (view.frame) setFixedSize(outer_, view.frame->width, view.frame->height);
    showSurroundings(view);
}

DrawnView::~DrawnView() = default;

NSView* DrawnView::view() const {
    return outer_;
}

bool DrawnView::canShow(const View& next) const {
    return next.content.index() == shown_.content.index() && next.id == shown_.id &&
           next.padding == shown_.padding && next.frame == shown_.frame &&
           takesAvailableWidth(next) == takesAvailableWidth(shown_) && haveSameSize(shown_, next);
}

void DrawnView::show(const View& next) {
    if (next == shown_) return;
    content_->show(next);
    showSurroundings(next);
    shown_ = next;
}

void DrawnView::showSurroundings(const View& next) {
    [static_cast<PurlockElementView*>(outer_) setGround:next.background];
    outer_.toolTip = textOrNil(next.help);
}

bool takesAvailableWidth(const View& view) {
    if (view.frame) return false;
    if (view.width == Width::available || std::holds_alternative<Divider>(view.content) ||
        std::holds_alternative<FlexibleSpace>(view.content) || std::holds_alternative<Scroll>(view.content)) {
        return true;
    }
    return std::ranges::any_of(view.children, takesAvailableWidth);
}

}  // namespace purlock::host_macos
