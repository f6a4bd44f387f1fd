#pragma once

#include "base/clock.h"
#include "platform/macos/accessibility/ax_tree.h"
#include "platform/macos/appkit/panel_windows.h"
#include "platform/macos/appkit/shell_services.h"
#include "platform/macos/appkit/system_status_bar.h"
#include "platform/macos/applications/workspace_applications.h"
#include "platform/macos/bluetooth/paired_devices.h"
#include "platform/macos/coreaudio/core_audio_hardware.h"
#include "platform/macos/dispatch/dispatch_queue.h"
#include "platform/macos/iokit/io_registry_usb.h"
#include "platform/macos/nowplaying/default_notification_center.h"
#include "platform/macos/nowplaying/media_remote.h"
#include "platform/macos/propertylist/preference_files.h"
#include "platform/macos/runloop/main_run_loop.h"
#include "platform/macos/storage/foundation_files.h"
#include "platform/macos/system/process_info.h"
#include "ui/app_delegate.h"

namespace purlock::host_macos {

/// Every service of the macOS host. Made by the main function, on the main thread; outlives the shell.
class MacHost {
  public:
    MacHost();
    MacHost(const MacHost&) = delete;
    MacHost& operator=(const MacHost&) = delete;

    /// Says how the shared services are made; before the shell.
    void provideSharedServices();

    /// What the shell asks of this host.
    AppDelegateSeams seams();

  private:
    Activity activity_;
    MainRunLoop mainLoop_;
    SystemClock clock_;
    ProcessInfo operatingSystem_;
    FoundationFiles files_;
    DispatchQueues queues_;
    PreferenceFiles preferences_;
    DefaultNotificationCenter notificationCenter_;
    MediaRemoteLoader frameworks_;
    AXTree accessibility_;
    PairedDevices bluetooth_;
    IORegistryUsb usb_;
    WorkspaceApplications applications_;
    CoreAudioHardware hardware_;
    SharedApplication application_;
    SystemStatusBar statusBar_;
    PanelWindowsOfAppKit panels_;
    GlobalEventMonitor events_;
    SharedWorkspace workspace_;
    SystemAccessibilityPrompt accessibilityPrompt_;
};

}  // namespace purlock::host_macos
