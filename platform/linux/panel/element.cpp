#include "platform/linux/panel/element.h"

#include <algorithm>
#include <utility>

#include "platform/linux/drawing/shapes.h"
#include "platform/linux/drawing/view_style.h"
#include "platform/linux/panel/accessible_panel.h"
#include "platform/linux/panel/box.h"
#include "platform/linux/panel/scroll_view.h"
#include "platform/linux/panel/text_label.h"
#include "ui/accessible_words.h"

namespace purlock::host_linux {

namespace {

/// Changes only what differs.
void describe(QWidget& control, const View& view) {
    const AccessibleWords words = accessibleWords(view);
    const QString name = lineText(words.name);
    const QString description = lineText(words.description);
    if (name != control.accessibleName()) control.setAccessibleName(name);
    if (description != control.accessibleDescription()) control.setAccessibleDescription(description);
    const QString tip = toolTipText(lineText(view.help));
    if (tip != control.toolTip()) control.setToolTip(tip);
}

}  // namespace

/// Makes the widget of each kind of element.
class Element::Maker {
  public:
    Maker(const PerformAction& perform, QWidget* parent) : perform_(perform), parent_(parent) {}

    QWidget* operator()(const Text&) const { return new TextLabel(parent_); }
    QWidget* operator()(const Symbol&) const { return new SymbolDrawing(parent_); }
    QWidget* operator()(const Circle&) const { return new CircleDrawing(parent_); }
    QWidget* operator()(const Bar&) const { return new Rule(parent_); }
    QWidget* operator()(const Divider&) const { return new Rule(parent_); }
    QWidget* operator()(const Space&) const { return new Gap(parent_); }
    QWidget* operator()(const FlexibleSpace&) const { return new Gap(parent_); }
    QWidget* operator()(const Column&) const { return new Box(QBoxLayout::TopToBottom, parent_); }
    QWidget* operator()(const Row&) const { return new Box(QBoxLayout::LeftToRight, parent_); }
    QWidget* operator()(const Overlay&) const { return new Stack(parent_); }
    QWidget* operator()(const Button&) const { return new PlainButton(perform_, parent_); }
    QWidget* operator()(const Switch&) const { return new MiniSwitch(perform_, parent_); }
    QWidget* operator()(const Menu&) const { return new PullDownMenu(perform_, parent_); }
    QWidget* operator()(const Scroll&) const { return new ScrollView(parent_); }

  private:
    const PerformAction& perform_;
    QWidget* const parent_;
};

/// Brings an element's widget, which is of the kind that `Maker` made, to what a view says.
class Element::Painter {
  public:
    Painter(Element& element, const View& view) : element_(element), view_(view) {}

    void operator()(const Text& content) const {
        as<TextLabel>().show(content, lineText(view_.help), name());
    }
    void operator()(const Symbol& content) const {
        as<SymbolDrawing>().show(content);
        as<Drawing>().setWords(name(), lineText(view_.help));
    }
    void operator()(const Circle& content) const {
        as<CircleDrawing>().show(content);
        as<Drawing>().setWords(name(), lineText(view_.help));
    }
    void operator()(const Bar& content) const { as<Rule>().show(content); }
    void operator()(const Divider&) const { as<Rule>().show(view_.background.value_or(Background{})); }
    void operator()(const Space& content) const { as<Gap>().show(content); }
    void operator()(const FlexibleSpace&) const { as<Gap>().showFlexible(); }
    void operator()(const Column& content) const { showBox(content.spacing); }
    void operator()(const Row& content) const { showBox(content.spacing); }
    void operator()(const Overlay&) const {
        element_.showChildren(view_.children);
        as<Stack>().arrange(element_.childWidgets());
    }
    void operator()(const Button& content) const {
        auto& button = as<PlainButton>();
        element_.showChildren(view_.children);
        for (QWidget* face : element_.childWidgets()) button.setFace(face);
        button.setAction(content.action);
        describe(button, view_);
    }
    void operator()(const Switch& content) const {
        auto& control = as<MiniSwitch>();
        for (const View& child : view_.children) {
            if (const auto* label = std::get_if<Text>(&child.content)) control.show(*label, content);
        }
        describe(control, view_);
    }
    void operator()(const Menu& content) const {
        auto& menu = as<PullDownMenu>();
        element_.showChildren(view_.children);
        for (QWidget* face : element_.childWidgets()) menu.setFace(face);
        menu.setEntries(content.entries);
        describe(menu, view_);
    }
    void operator()(const Scroll&) const {
        element_.showChildren(view_.children);
        for (QWidget* content : element_.childWidgets()) as<ScrollView>().setContent(content);
    }

  private:
    template <typename Widget>
    Widget& as() const {
        return static_cast<Widget&>(*element_.widget_);
    }

    QString name() const { return lineText(accessibleWords(view_).name); }

    void showBox(double spacing) const {
        auto& box = as<Box>();
        box.setSpacing(spacing);
        box.setPadding(view_.padding);
        box.setBackground(view_.background);
        element_.showChildren(view_.children);
        box.arrange(element_.childWidgets());
    }

    Element& element_;
    const View& view_;
};

Element::Element(const View& view, const PerformAction& perform, QWidget* parent)
    : kind_(view.content.index()),
      perform_(perform),
      widget_(std::visit(Maker(perform, parent), view.content)) {}

Element::~Element() {
    children_.clear();
    delete widget_;
}

void Element::show(const View& view) {
    id_ = view.id;
    if (view.readLast != widget_->property(readLastProperty).toBool()) {
        widget_->setProperty(readLastProperty, view.readLast);
    }
    std::visit(Painter(*this, view), view.content);
    if (view.frame) {
        widget_->setFixedSize(static_cast<int>(view.frame->width), static_cast<int>(view.frame->height));
    }
}

void Element::showChildren(const std::vector<View>& views) {
    auto old = std::exchange(children_, {});
    for (const View& view : views) {
        auto element = elementFor(view, old, views);
        element->show(view);
        children_.push_back(std::move(element));
    }
}

/// The old element of the same id; else one whose id is not used any more, so that a list whose entries all
/// have new ids is drawn into the widgets that are there; else a new one.
std::unique_ptr<Element> Element::elementFor(const View& view, std::vector<std::unique_ptr<Element>>& old,
                                             const std::vector<View>& views) {
    const auto same = [&view](const auto& element) {
        return element && element->id() == view.id && element->canShow(view);
    };
    const auto free = [&view, &views](const auto& element) {
        return element && element->canShow(view) &&
               std::ranges::find(views, element->id(), &View::id) == views.end();
    };
    auto found = std::ranges::find_if(old, same);
    if (found == old.end()) found = std::ranges::find_if(old, free);
    return found != old.end() ? std::move(*found) : std::make_unique<Element>(view, perform_, widget_);
}

std::vector<QWidget*> Element::childWidgets() const {
    std::vector<QWidget*> widgets;
    widgets.reserve(children_.size());
    for (const auto& child : children_) widgets.push_back(child->widget());
    return widgets;
}

void Element::appendFocusable(std::vector<QWidget*>& widgets) const {
    if (widget_->focusPolicy() != Qt::NoFocus) widgets.push_back(widget_);
    for (const auto& child : children_) child->appendFocusable(widgets);
}

}  // namespace purlock::host_linux
