#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <chrono>
#include <memory>

#include "platform/linux/toolkit/qt_run_loop.h"
#include "platform/linux/tray/tray_status_bar.h"
#include "tests/support/private_bus.h"
#include "ui/status_icon.h"

namespace purlock::test {

inline const SymbolImage idleIcon{"circle", "Idle", 14, FontWeight::semibold, {}};
inline const SymbolImage greenIcon{"checkmark.seal.fill", "Bit-perfect", 14, FontWeight::semibold, iconGreen};

/// An icon of the program, on a bus and perhaps an X server that the test starts.
class TrayTest : public testing::Test {
  protected:
    /// Runs the event loop, and `meanwhile`, until the condition holds; with a deadline.
    template <typename Condition>
    bool runUntil(Condition done, std::chrono::milliseconds time = std::chrono::seconds(10)) {
        return waitUntil(
            [&] {
                QCoreApplication::processEvents();
                if (meanwhile) meanwhile();
                return done();
            },
            time);
    }

    void makeItem() {
        bar_ = std::make_unique<host_linux::TrayStatusBar>(
            loop_, busThread_, bus.address(), [this] { return ++presentations > 0 && panelIsOpen; });
        item_ = bar_->statusItemWithLength(StatusBar::variableLength);
        button()->setImage(idleIcon);
        button()->setToolTip("Purlock — Idle");
        button()->setAction([this] { ++clicks; });
    }
    StatusButton* button() { return item_->button(); }
    void dropItem() { item_.reset(); }

    PrivateBus bus;
    std::function<void()> meanwhile;
    int clicks = 0;
    bool panelIsOpen = false;
    int presentations = 0;  // how often the panel was to come to the front

  private:
    host_linux::QtRunLoop loop_;
    host_linux::BusThread busThread_;
    std::unique_ptr<host_linux::TrayStatusBar> bar_;
    std::unique_ptr<StatusItem> item_;
};

}  // namespace purlock::test
