// Runs tests that make widgets, without a screen. Whatever Qt warns of fails the run: a user would read it on
// the console.

#include <gtest/gtest.h>

#include <QApplication>
#include <cstdio>

#include "tests/host-linux/panel/panel_picture.h"

namespace {

bool allowed(const QString& message) {
    // Of the test's platform, not of the program: it has no session, raises no windows and grabs no keys.
    return message.startsWith(QStringLiteral("QStandardPaths: XDG_RUNTIME_DIR not set")) ||
           message.startsWith(QStringLiteral("This plugin does not support "));
}

void report(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    if (type == QtDebugMsg || type == QtInfoMsg || allowed(message)) return;
    ADD_FAILURE() << "Qt says: " << message.toStdString();
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qInstallMessageHandler(report);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    const QApplication application(argc, argv);
    purlock::test::usePictureFont();
    return RUN_ALL_TESTS();
}
