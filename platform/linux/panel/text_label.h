#pragma once

#include <QColor>
#include <QLabel>

#include "ui/view.h"

namespace purlock::host_linux {

/// A plain text on one line, cut off at its end where the place is too narrow, or on as many lines as it
/// needs.
///
/// A QLabel to screen readers. It draws by itself because a QLabel neither cuts a line off nor breaks a word
/// that is wider than its place. Where something was cut off, hovering shows the whole text.
class TextLabel final : public QLabel {
  public:
    explicit TextLabel(QWidget* parent) : QLabel(parent) { setTextFormat(Qt::PlainText); }

    /// Changes only what differs. `help` is what hovering shows, before any text that was cut off; `name`
    /// is for screen readers.
    void show(const Text& content, const QString& help, const QString& name);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return wraps_; }
    int heightForWidth(int width) const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    int naturalWidth() const;
    int wrappedHeight(int width) const;
    void updateToolTip();

    QColor color_;
    QString help_;
    bool wraps_ = false;
};

}  // namespace purlock::host_linux
