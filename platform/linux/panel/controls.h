#pragma once

#include <QAbstractButton>
#include <QCheckBox>
#include <QLayout>
#include <QMenu>
#include <QPushButton>
#include <functional>
#include <vector>

#include "platform/linux/panel/outset.h"
#include "ui/view.h"

namespace purlock::host_linux {

// The panel's controls: reachable by the Tab key, used by Space or Return, known to screen readers by their
// role. Each shows what its child draws, a lighter ground while it is hovered or pressed, and an outline
// while it has the keyboard's focus. One that shows little reaches beyond it, so that the mouse meets at
// least 24 by 24 points. The function that they call outlives them.

using PerformAction = std::function<void(const Action&)>;

/// A borderless button.
class PlainButton final : public QAbstractButton, public Outreaching {
  public:
    PlainButton(const PerformAction& perform, QWidget* parent);
    void setFace(QWidget* face);
    void setAction(const Action& action) { action_ = action; }

    QSize sizeHint() const override { return QWidget::sizeHint(); }
    QMargins outset() const override { return layout() ? layout()->contentsMargins() : QMargins(); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    Action action_;
};

/// A borderless pull-down menu. It stays open while the panel is refreshed around it.
class PullDownMenu final : public QPushButton {
  public:
    PullDownMenu(PerformAction perform, QWidget* parent);
    void setFace(QWidget* face);

    /// Changes the entries if they differ, also those of an open menu.
    void setEntries(const std::vector<MenuEntry>& entries);

    QMenu& openMenu() { return menu_; }

    /// As large as what it shows.
    QSize sizeHint() const override { return layout() ? layout()->sizeHint() : QSize(); }
    QSize minimumSizeHint() const override { return layout() ? layout()->minimumSize() : QSize(); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void addEntry(const MenuEntry& entry);

    const PerformAction perform_;
    QMenu menu_;
    std::vector<MenuEntry> entries_;
};

/// A small switch behind its label.
class MiniSwitch final : public QCheckBox, public Outreaching {
  public:
    MiniSwitch(const PerformAction& perform, QWidget* parent);
    void show(const Text& label, const Switch& content);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    QMargins outset() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QSize shownSize() const;

    QString label_;
    QColor color_;
    Action action_;
};

}  // namespace purlock::host_linux
