#pragma once

#include <AppKit/AppKit.h>

#include <memory>

#include "platform/macos/appkit/drawn_view.h"

namespace purlock::host_macos {

/// What an element shows, without its surroundings. For Objective-C++ files; main thread only.
class DrawnContent {
  public:
    DrawnContent() = default;
    virtual ~DrawnContent() = default;
    DrawnContent(const DrawnContent&) = delete;
    DrawnContent& operator=(const DrawnContent&) = delete;

    virtual NSView* view() const = 0;

    /// `next` has the same kind of content as the one before, and a fixed size has not changed.
    virtual void show(const View& next) = 0;
};

using OnAction = DrawnView::OnAction;

// What makes each kind; the view has content of this kind, and the result shows it.

std::unique_ptr<DrawnContent> drawnText(const View& view);
std::unique_ptr<DrawnContent> drawnSymbol(const View& view);
std::unique_ptr<DrawnContent> drawnShape(const View& view);  // circles, bars, dividers and empty room
std::unique_ptr<DrawnContent> drawnStack(const View& view, const OnAction& onAction);
std::unique_ptr<DrawnContent> drawnOverlay(const View& view, const OnAction& onAction);
std::unique_ptr<DrawnContent> drawnScroll(const View& view, const OnAction& onAction);
std::unique_ptr<DrawnContent> drawnButton(const View& view, const OnAction& onAction);
std::unique_ptr<DrawnContent> drawnSwitch(const View& view, const OnAction& onAction);
std::unique_ptr<DrawnContent> drawnMenu(const View& view, const OnAction& onAction);

// Shared by them.

/// Layout by constraints, not by the frame that it has now.
void useConstraints(NSView* view);
void setFixedSize(NSView* view, double width, double height);
void pinEdges(NSView* inner, NSView* outer, const Padding& padding);

// How strongly an element keeps its own size when there is room to spare; what is to spare goes to the
// weakest.
inline constexpr NSLayoutPriority yielding = 1;
inline constexpr NSLayoutPriority soft = 200;
inline constexpr NSLayoutPriority firm = 750;

}  // namespace purlock::host_macos
