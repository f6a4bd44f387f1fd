#include "platform/linux/desktop/display.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>
#include <QToolTip>

#include "platform/linux/desktop/view_style.h"
#include "ui/view_parts.h"

namespace purlock::host_linux {

namespace {

constexpr Color ground{0.17, 0.17, 0.18, 1};

QPalette darkPalette() {
    QPalette palette;
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button, QPalette::ToolTipBase}) {
        palette.setColor(role, qtColor(ground));
    }
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                            QPalette::HighlightedText}) {
        palette.setColor(role, qtColor(white(0.92)));
    }
    palette.setColor(QPalette::Highlight, qtColor({0.2, 0.45, 0.85, 1}));
    return palette;
}

QtMessageHandler printMessage = nullptr;  // the toolkit's own

bool isNoNews(const QString& message) {
    return message.startsWith(QStringLiteral("QStandardPaths: XDG_RUNTIME_DIR not set")) ||
           message.startsWith(QStringLiteral("This plugin does not support "));
}

void printNews(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (!isNoNews(message)) printMessage(type, context, message);
}

}  // namespace

void quietenToolkit() {
    printMessage = qInstallMessageHandler(printNews);
}

void chooseDisplay() {
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return;
    const bool x = !qEnvironmentVariableIsEmpty("DISPLAY");
    const bool wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    const char* platforms = x && wayland ? "xcb;wayland" : x ? "xcb" : wayland ? "wayland" : "offscreen";
    qputenv("QT_QPA_PLATFORM", platforms);
}

void applyDarkLook() {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QPalette palette = darkPalette();
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

}  // namespace purlock::host_linux
