#include "platform/linux/toolkit/desktop_services.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QString>
#include <QUrl>
#include <system_error>

#include "platform/linux/toolkit/display.h"

namespace purlock::host_linux {

void QtApplication::setActivationPolicy(ActivationPolicy /*policy*/) {}

void QtApplication::activateIgnoringOtherApps() {}

void QtApplication::terminate() {
    QCoreApplication::quit();
}

void QtWorkspace::openURL(const std::filesystem::path& file) {
    spareOtherPrograms();
    std::error_code error;
    const auto& there = std::filesystem::exists(file, error) ? file : file.parent_path();
    QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(there.string())));
}

}  // namespace purlock::host_linux
