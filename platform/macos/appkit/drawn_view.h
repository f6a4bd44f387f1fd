#pragma once

#include <AppKit/AppKit.h>

#include <functional>
#include <memory>

#include "ui/view.h"

namespace purlock::host_macos {

class DrawnContent;

/// One element of the panel as an AppKit view: its content within its padding, on its background.
///
/// For Objective-C++ files; main thread only. When the tree changes, an element that can show its successor
/// does so in place, so that the scroll position, an open menu, the focus and a hovered help text survive.
class DrawnView {
  public:
    using OnAction = std::function<void(const Action&)>;

    DrawnView(const View& view, const OnAction& onAction);
    ~DrawnView();
    DrawnView(const DrawnView&) = delete;
    DrawnView& operator=(const DrawnView&) = delete;

    /// What stands in the window; the same object for as long as this lives.
    NSView* view() const;

    /// True if this element may become `next`: the same kind of content, of the same size where that is
    /// fixed.
    bool canShow(const View& next) const;

    /// Becomes `next`, changing only what differs.
    void show(const View& next);

    const View& shown() const { return shown_; }

  private:
    void showSurroundings(const View& next);

    View shown_;
    NSView* const outer_;
    std::unique_ptr<DrawnContent> content_;
};

/// True if an element takes all the width that its column has: it says so, or something in it wants to fill
/// what is to spare.
bool takesAvailableWidth(const View& view);

}  // namespace purlock::host_macos
