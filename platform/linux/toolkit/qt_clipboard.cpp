#include "platform/linux/toolkit/qt_clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QString>

namespace purlock::host_linux {

void QtClipboard::setText(const std::string& text) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

}  // namespace purlock::host_linux
