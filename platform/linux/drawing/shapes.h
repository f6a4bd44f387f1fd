#pragma once

#include <QLabel>
#include <QTimeLine>
#include <optional>

#include "ui/view.h"

namespace purlock::host_linux {

// The small drawings of the panel. Each changes only what differs from what it shows. To screen readers they
// are labels, with the words that they are given.

/// A drawing with the words that stand for it.
class Drawing : public QLabel {
  public:
    using QLabel::QLabel;

    /// `name` is for screen readers; hovering shows `help`.
    void setWords(const QString& name, const QString& help);
};

class SymbolDrawing final : public Drawing {
  public:
    using Drawing::Drawing;
    void show(const Symbol& content);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::optional<Symbol> content_;
};

/// A circle, whose opacity may fade from one value to the next.
class CircleDrawing final : public Drawing {
  public:
    using Drawing::Drawing;
    void show(const Circle& content);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void fadeTo(double opacity, const EaseOut& animation);

    std::optional<Circle> content_;
    double opacity_ = 1;
    QTimeLine fading_;
};

/// A filled rectangle: a bar of its own height or of its row's, or a line across a column.
class Rule final : public QWidget {
  public:
    using QWidget::QWidget;
    void show(const Bar& content);
    void show(const Background& content);

    bool joinsCircles() const { return joinsCircles_; }
    const QColor& color() const { return color_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void setColor(const QColor& color);

    QColor color_;
    bool joinsCircles_ = false;
};

}  // namespace purlock::host_linux
