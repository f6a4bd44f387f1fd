#include "platform/linux/panel/accessible_panel.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLayout>
#include <QMetaObject>
#include <QScrollArea>
#include <algorithm>

#include "platform/linux/drawing/shapes.h"
#include "platform/linux/panel/box.h"
#include "platform/linux/panel/controls.h"
#include "platform/linux/panel/panel_surface.h"
#include "platform/linux/panel/scroll_view.h"
#include "platform/linux/panel/text_label.h"

namespace purlock::host_linux {

namespace {

/// The role of a widget for screen readers; `NoRole` for one that only holds others.
QAccessible::Role roleOf(const QObject* object) {
    if (dynamic_cast<const PanelSurface*>(object) != nullptr) return QAccessible::Dialog;
    if (dynamic_cast<const PlainButton*>(object) != nullptr) return QAccessible::Button;
    if (dynamic_cast<const PullDownMenu*>(object) != nullptr) return QAccessible::ButtonMenu;
    if (dynamic_cast<const MiniSwitch*>(object) != nullptr) return QAccessible::CheckBox;
    if (dynamic_cast<const TextLabel*>(object) != nullptr ||
        dynamic_cast<const Drawing*>(object) != nullptr) {
        return QAccessible::StaticText;
    }
    return QAccessible::NoRole;
}

bool isRead(const QWidget& widget) {
    const QAccessible::Role role = roleOf(&widget);
    const bool hasName = role != QAccessible::StaticText || !widget.accessibleName().isEmpty();
    return role != QAccessible::NoRole && hasName;
}

QWidgetList inLayout(const QLayout& layout) {
    QWidgetList widgets;
    for (int index = 0; index < layout.count(); ++index) {
        if (QWidget* widget = layout.itemAt(index)->widget()) widgets.append(widget);
    }
    return widgets;
}

/// The children in the order in which they are read.
QWidgetList orderedChildren(const QWidget& parent) {
    if (const auto* area = dynamic_cast<const QScrollArea*>(&parent)) return {area->widget()};
    QWidgetList children = parent.layout() != nullptr
                               ? inLayout(*parent.layout())
                               : parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    std::stable_partition(children.begin(), children.end(),
                          [](const QWidget* child) { return !child->property(readLastProperty).toBool(); });
    return children;
}

/// Everything below `parent` that is read, at any depth of rows and columns.
void appendRead(const QWidget& parent, QWidgetList& found) {
    for (QWidget* child : orderedChildren(parent)) {
        if (child == nullptr || child->isHidden() || child->isWindow()) continue;
        if (isRead(*child)) {
            found.append(child);
        } else {
            appendRead(*child, found);
        }
    }
}

/// A part of the panel, or the panel itself.
class PanelPart final : public QAccessibleWidget {
  public:
    explicit PanelPart(QWidget* shown) : QAccessibleWidget(shown, partRole(shown)) {}

    QAccessibleInterface* parent() const override {
        if (isPanel()) return QAccessibleWidget::parent();
        return QAccessible::queryAccessibleInterface(widget()->window());
    }

    int childCount() const override { return static_cast<int>(children().size()); }

    QAccessibleInterface* child(int index) const override {
        const QWidgetList all = children();
        if (index < 0 || index >= all.size()) return nullptr;
        return QAccessible::queryAccessibleInterface(all.at(index));
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* shown = child != nullptr ? qobject_cast<QWidget*>(child->object()) : nullptr;
        return static_cast<int>(children().indexOf(shown));
    }

    QAccessibleInterface* childAt(int x, int y) const override {
        for (QWidget* child : children()) {
            if (QRect(child->mapToGlobal(QPoint()), child->size()).contains(x, y)) {
                return QAccessible::queryAccessibleInterface(child);
            }
        }
        return nullptr;
    }

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        if (const auto* toggle = dynamic_cast<const MiniSwitch*>(widget())) {
            state.checkable = true;
            state.checked = toggle->isChecked();
        }
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget())) {
            state.pressed = button->isDown();
        }
        if (role() == QAccessible::ButtonMenu) state.hasPopup = true;
        return state;
    }

    QStringList actionNames() const override {
        if (role() == QAccessible::ButtonMenu) return {showMenuAction()};
        if (role() == QAccessible::CheckBox) return {toggleAction(), pressAction()};
        if (role() == QAccessible::Button) return {pressAction()};
        return {};
    }

    /// Done after the request has been answered: a menu keeps a call until it is closed.
    void doAction(const QString& name) override {
        if (!actionNames().contains(name)) return;
        const char* slot = role() == QAccessible::ButtonMenu ? "showMenu" : "click";
        QMetaObject::invokeMethod(widget(), slot, Qt::QueuedConnection);
    }

  private:
    static QAccessible::Role partRole(const QWidget* shown) {
        const QAccessible::Role role = roleOf(shown);
        return role == QAccessible::NoRole ? QAccessible::Grouping : role;
    }

    bool isPanel() const { return role() == QAccessible::Dialog; }

    QWidgetList children() const {
        QWidgetList found;
        if (isPanel()) appendRead(*widget(), found);
        auto* menuButton = dynamic_cast<PullDownMenu*>(widget());
        if (menuButton != nullptr && menuButton->openMenu().isVisible()) {
            found.append(&menuButton->openMenu());
        }
        return found;
    }
};

/// A widget that holds others belongs to the panel as well: the toolkit tells when it comes or goes.
bool isPartOfPanel(const QObject* object) {
    return roleOf(object) != QAccessible::NoRole || dynamic_cast<const Box*>(object) != nullptr ||
           dynamic_cast<const Stack*>(object) != nullptr || dynamic_cast<const Gap*>(object) != nullptr ||
           dynamic_cast<const Rule*>(object) != nullptr || dynamic_cast<const ScrollView*>(object) != nullptr;
}

QAccessibleInterface* makePart(const QString& /*className*/, QObject* object) {
    auto* const shown = qobject_cast<QWidget*>(object);
    if (shown == nullptr || !isPartOfPanel(object)) return nullptr;
    return dynamic_cast<PanelSurface*>(shown->window()) != nullptr ? new PanelPart(shown) : nullptr;
}

}  // namespace

void describePanelToScreenReaders() {
    QAccessible::installFactory(makePart);
}

}  // namespace purlock::host_linux
