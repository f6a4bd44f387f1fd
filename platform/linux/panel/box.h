#pragma once

#include <QBoxLayout>
#include <QWidget>
#include <optional>
#include <vector>

#include "platform/linux/panel/outset.h"
#include "ui/view.h"

namespace purlock::host_linux {

class Rule;

/// A row or column with room and a rounded ground around it. Where its children reach beyond their places by
/// more than this room, it reaches beyond its own place by the rest.
class Box final : public QWidget, public Outreaching {
  public:
    Box(QBoxLayout::Direction direction, QWidget* parent);

    void setSpacing(double spacing);
    void setPadding(const Padding& padding);
    void setBackground(const std::optional<Background>& background);

    /// Puts the children into that order, adding and leaving out what differs.
    void arrange(const std::vector<QWidget*>& children);

    QMargins outset() const override { return outset_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    /// A bar and the circles that it joins, null where there is none. They belong to the children.
    struct Link {
        const Rule* bar;
        const QWidget* above;
        const QWidget* below;
    };

    void showMargins();
    void findLinks();
    void drawLinks();

    QBoxLayout* const layout_;  // belongs to this
    QMargins padding_;
    QMargins outset_;
    std::vector<Link> links_;
    std::optional<Background> background_;
};

/// Children over one another, centred.
class Stack final : public QWidget {
  public:
    explicit Stack(QWidget* parent);
    void arrange(const std::vector<QWidget*>& children);
};

/// Room that stays empty.
class Gap final : public QWidget {
  public:
    using QWidget::QWidget;
    void show(const Space& content) {
        setFixedSize(static_cast<int>(content.width), static_cast<int>(content.height));
    }
    void showFlexible() { setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum); }
};

}  // namespace purlock::host_linux
