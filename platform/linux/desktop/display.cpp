#include "platform/linux/desktop/display.h"

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
           message.startsWith(QStringLiteral("This plugin does not support ")) ||
           message.startsWith(QStringLiteral("Detected locale ")) ||
           message.startsWith(QStringLiteral("Could not find accessible on path"));
}

void printNews(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (!isNoNews(message)) printMessage(type, context, message);
}

/// Sets a variable of the environment that is not set, until the end of the scope.
class TemporaryVariable {
  public:
    TemporaryVariable(const char* name, const char* value)
        : name_(name), isOurs_(!qEnvironmentVariableIsSet(name)) {
        if (isOurs_) qputenv(name_, value);
    }
    ~TemporaryVariable() {
        if (isOurs_) qunsetenv(name_);
    }
    TemporaryVariable(const TemporaryVariable&) = delete;
    TemporaryVariable& operator=(const TemporaryVariable&) = delete;

  private:
    const char* const name_;
    const bool isOurs_;
};

const char* preferredPlatforms() {
    const bool x = !qEnvironmentVariableIsEmpty("DISPLAY");
    const bool wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    return x && wayland ? "xcb;wayland" : x ? "xcb" : wayland ? "wayland" : "offscreen";
}

}  // namespace

void quietenToolkit() {
    printMessage = qInstallMessageHandler(printNews);
}

std::unique_ptr<QApplication> startToolkit(int& argc, char** argv) {
    const TemporaryVariable platform("QT_QPA_PLATFORM", preferredPlatforms());
    const TemporaryVariable eventLoop("QT_NO_GLIB", "1");
    return std::make_unique<QApplication>(argc, argv);
}

void applyDarkLook() {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QPalette palette = darkPalette();
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

}  // namespace purlock::host_linux
