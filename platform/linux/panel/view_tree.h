#pragma once

#include <QWidget>
#include <memory>
#include <vector>

#include "platform/linux/panel/controls.h"
#include "ui/view.h"

namespace purlock::host_linux {

class Element;

/// A view tree on the screen, drawn with widgets.
///
/// Each new tree changes only what differs: widgets live on as long as the element that they stand for, and
/// with them the keyboard's focus, an open menu, a tool tip and the scroll position. Main thread only.
class ViewTree {
  public:
    /// `perform` is called for every control that is used.
    explicit ViewTree(PerformAction perform);

    /// Deletes the widgets.
    ~ViewTree();

    ViewTree(const ViewTree&) = delete;
    ViewTree& operator=(const ViewTree&) = delete;

    /// Shows `view` inside `parent`; returns the widget of its root, which stays the same as long as the
    /// root's kind does.
    QWidget* show(const View& view, QWidget* parent);

  private:
    void orderFocus();

    const PerformAction perform_;
    std::unique_ptr<Element> root_;
    std::vector<QWidget*> focusOrder_;
};

}  // namespace purlock::host_linux
