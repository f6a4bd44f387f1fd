#pragma once

#include <QLayoutItem>
#include <QMargins>
#include <QWidget>

namespace purlock::host_linux {

/// A widget that reaches beyond the place which its layout gives it: room for the mouse and for the outline
/// of the focus, taken from the empty space around it, so that nothing moves.
class Outreaching {
  public:
    Outreaching() = default;
    virtual ~Outreaching() = default;
    Outreaching(const Outreaching&) = delete;
    Outreaching& operator=(const Outreaching&) = delete;

    virtual QMargins outset() const = 0;
};

inline QMargins outsetOf(const QWidget& widget) {
    const auto* outreaching = dynamic_cast<const Outreaching*>(&widget);
    return outreaching != nullptr ? outreaching->outset() : QMargins();
}

/// Lays such a widget out as if it were as small as its place.
class OutsetItem final : public QWidgetItem {
  public:
    OutsetItem(QWidget* widget, const QMargins& outset) : QWidgetItem(widget), outset_(outset) {}

    const QMargins& outset() const { return outset_; }

    QSize sizeHint() const override { return QWidgetItem::sizeHint().shrunkBy(hidden()); }
    QSize minimumSize() const override { return QWidgetItem::minimumSize().shrunkBy(outset_); }
    QRect geometry() const override { return QWidgetItem::geometry().marginsRemoved(outset_); }
    int heightForWidth(int width) const override {
        const QMargins margins = hidden();
        const int height = QWidgetItem::heightForWidth(width + margins.left() + margins.right());
        return height < 0 ? height : height - margins.top() - margins.bottom();
    }
    void setGeometry(const QRect& place) override {
        isPlacing_ = true;
        QWidgetItem::setGeometry(place.marginsAdded(outset_));
        isPlacing_ = false;
    }

  private:
    /// The layout is not told of the outset. The toolkit asks for the sizes once more while it aligns the
    /// widget, and is then told the widget's own.
    QMargins hidden() const { return isPlacing_ ? QMargins() : outset_; }

    const QMargins outset_;
    bool isPlacing_ = false;
};

}  // namespace purlock::host_linux
