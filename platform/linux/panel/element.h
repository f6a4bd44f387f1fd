#pragma once

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/panel/controls.h"
#include "ui/view.h"

namespace purlock::host_linux {

/// One element of a view tree and the widget that draws it.
///
/// Owned by the element around it, or by the tree; main thread only.
class Element {
  public:
    /// Makes the widget for elements of `view`'s kind; `show` fills it.
    Element(const View& view, const PerformAction& perform, QWidget* parent);

    /// Deletes the widget.
    ~Element();

    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    /// True if the widget can draw `view`: it is of the same kind.
    bool canShow(const View& view) const { return view.content.index() == kind_; }
    void show(const View& view);

    const std::string& id() const { return id_; }
    QWidget* widget() const { return widget_; }

    /// Appends the widgets that take the keyboard's focus, in reading order.
    void appendFocusable(std::vector<QWidget*>& widgets) const;

  private:
    class Maker;
    class Painter;

    void showChildren(const std::vector<View>& views);
    std::unique_ptr<Element> elementFor(const View& view, std::vector<std::unique_ptr<Element>>& old,
                                        const std::vector<View>& views);
    std::vector<QWidget*> childWidgets() const;

    const std::size_t kind_;
    const PerformAction& perform_;
    QWidget* const widget_;
    std::string id_;
    std::vector<std::unique_ptr<Element>> children_;
};

}  // namespace purlock::host_linux
