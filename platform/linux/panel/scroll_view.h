#pragma once

#include <QPropertyAnimation>
#include <QScrollArea>
#include <QScrollBar>

namespace purlock::host_linux {

/// A column that is as wide as the view and as high as it needs, under a slim scroll bar that is visible
/// whenever there is something to scroll.
///
/// The bar stands on the content's own margin, so that nothing moves when it comes or goes. A wheel's notch
/// glides, a touchpad's small steps are followed as they come.
class ScrollView final : public QScrollArea {
  public:
    explicit ScrollView(QWidget* parent);

    /// Shows `content`, which then belongs to this.
    void setContent(QWidget* content);

    /// Scrolls as a key asks: arrows, Page Up and Down, Home, End and Space. False for every other key.
    bool scrollByKey(const QKeyEvent& key);

    /// At once, without gliding.
    void scrollToTop();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void glideTo(int value);
    void showFocus(QWidget* focused);
    void layOutContent();
    void placeBar();

    QScrollBar* const bar_;  // belongs to this
    QPropertyAnimation gliding_;
};

}  // namespace purlock::host_linux
