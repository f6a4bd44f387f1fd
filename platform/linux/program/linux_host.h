#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/run_loop_queues.h"
#include "base/worker_pool.h"
#include "platform/linux/accessibility/atspi_tree.h"
#include "platform/linux/activation/instance_activation.h"
#include "platform/linux/applications/desktop_applications.h"
#include "platform/linux/bluetooth/bluez_stack.h"
#include "platform/linux/dbus/bus_thread.h"
#include "platform/linux/nowplaying/main_notification_center.h"
#include "platform/linux/nowplaying/mpris_framework.h"
#include "platform/linux/nowplaying/player_applications.h"
#include "platform/linux/panel/outside_clicks.h"
#include "platform/linux/panel/qt_panel_window.h"
#include "platform/linux/pipewire/hardware/pipewire_hardware.h"
#include "platform/linux/playedfile/played_files.h"
#include "platform/linux/propertylist/preference_files.h"
#include "platform/linux/storage/disk_application_files.h"
#include "platform/linux/system/host_operating_system.h"
#include "platform/linux/toolkit/desktop_services.h"
#include "platform/linux/toolkit/qt_clipboard.h"
#include "platform/linux/toolkit/qt_run_loop.h"
#include "platform/linux/tray/tray_status_bar.h"
#include "platform/linux/usb/sysfs_usb_registry.h"
#include "ui/app_delegate.h"

namespace purlock::host_linux {

/// On Linux the prompt switches accessibility on for the session, without a question.
class EnableAccessibility final : public AccessibilityPrompt {
  public:
    explicit EnableAccessibility(AtSpiTree& tree) : tree_(tree) {}
    void request() override { tree_.enable(); }

  private:
    AtSpiTree& tree_;
};

/// Every service of the Linux host, made and ended in the order in which they need each other.
///
/// Made by the main function, on the main thread, once Qt's application object is there; ended after the
/// shell, before that object.
class LinuxHost {
  public:
    /// `sessionBus` is the bus's address.
    explicit LinuxHost(std::string sessionBus);

    /// Ends the services, after `finish`.
    ~LinuxHost() = default;

    LinuxHost(const LinuxHost&) = delete;
    LinuxHost& operator=(const LinuxHost&) = delete;

    /// Says how the shared services are made; before the shell.
    void provideSharedServices();

    /// The seams of the shell, answered by this host.
    AppDelegateSeams seams();

    /// Has `onActivate` run on the main thread whenever the program is started once more.
    void listenToStarts(std::function<void()> onActivate);

    /// Lets the queues finish what they have, once the shell has ended. False when the disk of the program's
    /// own files hangs: that work still uses this object, so the process has to end and not this.
    [[nodiscard]] bool finish();

  private:
    void followPlayers();
    bool soundRuns();

    const std::string sessionBus_;
    QtRunLoop mainLoop_;
    RunLoopQueues mainQueues_{mainLoop_};
    SystemClock clock_;
    HostOperatingSystem operatingSystem_;
    DiskApplicationFiles files_;
    WorkerPool queues_;
    WorkerPool foreignFiles_;  // for what may hang: files of other programs
    PreferenceFiles preferences_;
    BusThread busThread_;
    MainNotificationCenter notificationCenter_;
    PlayedFiles playedFiles_;
    MprisFrameworkLoader players_;
    AtSpiTree accessibility_;
    EnableAccessibility accessibilityPrompt_{accessibility_};
    BlueZStack bluetooth_;
    SysfsUsbRegistry usb_;
    DesktopApplications applications_;
    PlayerApplications playerApplications_{applications_, players_};
    PipeWireHardware hardware_;
    QtApplication application_;
    QtWorkspace workspace_;
    QtClipboard clipboard_;
    OutsideClicks outsideClicks_{mainLoop_, [this](double x, double y) { return statusBar_.iconAt(x, y); }};
    TrayStatusBar statusBar_;
    QtPanelWindows panels_{[this] { return statusBar_.iconFrame(); }};
    std::unique_ptr<InstanceActivation> activation_;
    std::uint64_t notedChanges_ = 0;
    std::vector<Cancellable> playerChanges_;
};

}  // namespace purlock::host_linux
