#include "platform/linux/desktop/qt_panel_window.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>
#include <QWidget>
#include <algorithm>
#include <utility>

#include "platform/linux/desktop/view_style.h"
#include "platform/linux/desktop/view_tree.h"
#include "ui/view_parts.h"

namespace purlock::host_linux {

namespace {

constexpr Color ground{0.145, 0.145, 0.155, 1};

/// Screen points with y upwards from the bottom edge of the primary screen, and Qt's with y downwards.
double flipped(double y, double height) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->geometry().bottom() + 1 - (y + height) : y;
}

/// The window itself: a dark ground with a faint edge.
class Surface final : public QWidget {
  public:
    explicit Surface(PanelWindowEvents events) : events_(std::move(events)), tree_(events_.onAction) {
        setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        setWindowTitle(QStringLiteral("Purlock"));
        setAttribute(Qt::WA_QuitOnClose, false);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

    void setContent(const View& content) {
        QWidget* root = tree_.show(content, this);
        root->move(0, 0);
        root->show();
    }

  protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        painter.fillRect(event->rect(), qtColor(ground));
        painter.setPen(qtColor(white(0.12)));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }

    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Escape) {
            events_.onCancel();
        } else {
            QWidget::keyPressEvent(event);
        }
    }

    /// The desktop's own way of closing a window hides it, as Escape does.
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        events_.onCancel();
    }

  private:
    const PanelWindowEvents events_;
    ViewTree tree_;
};

class QtPanelWindow final : public PanelWindow {
  public:
    QtPanelWindow(const PanelStyle& style, PanelWindowEvents events)
        : events_(std::move(events)), frame_(style.contentRect) {}

    void setContent(const View& content) override { surface().setContent(content); }

    bool isVisible() const override { return surface_ && surface_->isVisible(); }

    Rect frame() const override { return frame_; }

    void setFrameOrigin(Point origin) override {
        frame_.x = origin.x;
        frame_.y = origin.y;
    }

    void makeKeyAndOrderFront() override {
        surface().move(onScreen());
        surface().show();
        surface().raise();
        surface().activateWindow();
    }

    void orderOut() override {
        if (surface_) surface_->hide();
    }

  private:
    Surface& surface() {
        if (!surface_) {
            surface_ = std::make_unique<Surface>(events_);
            surface_->setFixedSize(static_cast<int>(frame_.width), static_cast<int>(frame_.height));
        }
        return *surface_;
    }

    QPoint onScreen() const {
        return {static_cast<int>(frame_.x), static_cast<int>(flipped(frame_.y, frame_.height))};
    }

    const PanelWindowEvents events_;
    Rect frame_;
    std::unique_ptr<Surface> surface_;
};

}  // namespace

std::unique_ptr<PanelWindow> QtPanelWindows::makePanel(const PanelStyle& style, PanelWindowEvents events) {
    return std::make_unique<QtPanelWindow>(style, std::move(events));
}

}  // namespace purlock::host_linux
