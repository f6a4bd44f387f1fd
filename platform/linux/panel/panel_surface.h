#pragma once

#include <QWidget>

#include "platform/linux/drawing/panel_edge.h"
#include "platform/linux/panel/view_tree.h"
#include "platform/linux/panel/x_panel_window.h"
#include "ui/window_seams.h"

namespace purlock::host_linux {

/// The panel's window: the view tree on a dark ground with a faint edge, without a frame, above other
/// windows. Main thread only.
class PanelSurface final : public QWidget {
  public:
    explicit PanelSurface(PanelWindowEvents events, WindowKind kind = WindowKind::managed);

    /// Shows `content`, changing only what differs from what is shown. The root is as large as the window,
    /// independent of its own frame: on a low screen the window is lower, and the content scrolls in it.
    void setContent(const View& content);

    /// How large the panel is and how it ends. The window is larger by the shadow's room.
    void setPanel(const QSize& size, const PanelEdge& edge);

    /// Where the panel stands in the window.
    QRect panelRect() const;

    /// Gives back the picture of the window, which is made anew when it is next shown.
    void releaseDrawing();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    static void settleLayout();
    void placeRoot();

    const PanelWindowEvents events_;
    ViewTree tree_;
    PanelEdge edge_;
    QWidget* root_ = nullptr;  // belongs to tree_
};

}  // namespace purlock::host_linux
