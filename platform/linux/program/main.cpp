#include <QApplication>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/identity.h"
#include "platform/linux/activation/instance_activation.h"
#include "platform/linux/dbus/bus_address.h"
#include "platform/linux/dbus/bus_silence.h"
#include "platform/linux/drawing/menu_style.h"
#include "platform/linux/panel/accessible_panel.h"
#include "platform/linux/program/linux_host.h"
#include "platform/linux/program/quit_signals.h"
#include "platform/linux/storage/instance_lock.h"
#include "platform/linux/system/directories.h"
#include "platform/linux/system/unused_memory.h"
#include "platform/linux/toolkit/display.h"

namespace {

using namespace purlock;
using namespace purlock::host_linux;

/// In the session's own folder; without a session, beside the program's files.
std::filesystem::path lockFile() {
    const auto runtime = processEnvironment("XDG_RUNTIME_DIR");
    if (runtime && runtime->starts_with('/')) return std::filesystem::path(*runtime) / "purlock.lock";
    return dataDirectory().value_or("/nonexistent") / "purlock.lock";
}

constexpr std::chrono::seconds longestActivation{1};

/// A second start opens the panel of the first one, or closes it.
int activateTheOther() {
    const std::string bus = sessionBusAddress();
    const bool activated = activateRunningInstance(bus, longestActivation);
    const auto isOpen = activated ? panelOfRunningInstance(bus, longestActivation) : std::nullopt;
    std::puts(!isOpen   ? "Purlock is already running in this session."
              : *isOpen ? "Purlock is already running in this session: its panel was opened."
                        : "Purlock is already running in this session: its panel was closed.");
    return EXIT_SUCCESS;
}

constexpr std::chrono::seconds longestBusSilence{2};

/// The toolkit waits without end for a session bus that hangs, on the main thread. It gets none to wait for
/// then, and so do the programs that open files for this one; the host goes on trying the true one.
void keepToolkitFromSilentBus(const std::string& sessionBus) {
    if (isSilentBus(sessionBus, longestBusSilence)) {
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    }
}

/// Ends the process without ending what work on a hanging disk still uses.
[[noreturn]] void leaveAtOnce(InstanceLock& lock, int status) {
    lock.release();
    std::_Exit(status);
}

int run(const std::string& sessionBus, InstanceLock& lock) {
    std::optional<QuitSignals> quitSignals(std::in_place, [] { QCoreApplication::quit(); });
    LinuxHost host(sessionBus);
    host.provideSharedServices();
    auto shell = std::make_shared<AppDelegate>(host.seams());
    shell->applicationDidFinishLaunching();
    host.listenToStarts([weak = std::weak_ptr(shell)] {
        if (const auto running = weak.lock()) running->togglePanel();
    });
    const int status = QApplication::exec();
    quitSignals.reset();  // nobody listens any more, and the end may take a while
    shell.reset();
    if (!host.finish()) leaveAtOnce(lock, status);
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    keepFreeMemorySmall();
    InstanceLock lock(lockFile());
    if (lock.outcome() == InstanceLock::Outcome::heldByAnother) return activateTheOther();
    quietenToolkit();
    const std::string sessionBus = sessionBusAddress();
    keepToolkitFromSilentBus(sessionBus);
    QApplication::setApplicationName("Purlock");
    QApplication::setDesktopFileName(applicationIdentifier);
    QApplication::setQuitOnLastWindowClosed(false);
    const auto application = startToolkit(argc, argv);
    describePanelToScreenReaders();
    applyDarkLook();
    return run(sessionBus, lock);
}
