#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/report_coordinator.h"
#include "app/settings_store.h"
#include "audio/audio_monitor.h"
#include "base/clock.h"
#include "base/run_loop.h"
#include "core/system_words.h"
#include "source/accessibility_tree.h"
#include "ui/live_pulse.h"
#include "ui/view.h"

namespace purlock {

/// What the panel asks of the host. All of it outlives the panel.
struct MenubarPanelSeams {
    RunLoop& mainLoop;
    const Clock& clock;
    AccessibilityTree& accessibility;
    SystemWords words = {};
};

/// What the shell does for the panel.
struct MenubarPanelActions {
    std::function<void()> onOpenLog;
    std::function<void()> onRequestAccessibility;
    std::function<void()> onQuit;
    std::function<void(const std::string& text)> onCopy = {};  // empty where nothing can be copied
};

/// The content of the drop-down panel: what plays, the verdict, the signal path with its findings, the choice
/// of the output device, and the switches.
///
/// Made once by the shell, main thread only. A function of what it observes, with no state of its own but the
/// flash of the live indicator; its only effects are writes to the settings and the actions. It
/// observes while it is on the screen: a hidden panel costs nothing.
class MenubarPanel {
  public:
    /// `onChange` runs whenever anything observed announces a change, maybe before it has happened and
    /// several times in a row: read `body` anew, once, in the next turn of the main loop.
    MenubarPanel(const MenubarPanelSeams& seams, std::shared_ptr<AudioMonitor> monitor,
                 std::shared_ptr<ReportCoordinator> coordinator, std::shared_ptr<SettingsStore> settings,
                 MenubarPanelActions actions, std::function<void()> onChange);

    MenubarPanel(const MenubarPanel&) = delete;
    MenubarPanel& operator=(const MenubarPanel&) = delete;

    /// Called when the panel comes to the screen and when it leaves it; twice is as good as once.
    void appear();
    void disappear();

    /// True if it has appeared: only then does it tell of changes.
    bool isOnScreen() const { return !subscriptions_.empty(); }

    /// What is to be seen now.
    View body() const;

    /// Does what a control of `body` asks for.
    void perform(const Action& action);

  private:
    View header() const;
    View pinButton() const;
    View verdictSummary() const;
    View devicePicker() const;
    View footer() const;
    std::string currentDeviceLabel() const;
    std::optional<std::string> currentDevice() const;

    const MenubarPanelSeams seams_;
    const std::shared_ptr<AudioMonitor> monitor_;
    const std::shared_ptr<ReportCoordinator> coordinator_;
    const std::shared_ptr<SettingsStore> settings_;
    const MenubarPanelActions actions_;
    const std::function<void()> onChange_;
    LivePulse pulse_;
    std::vector<Cancellable> subscriptions_;  // while on the screen
};

/// "Output ready at 96.0 kHz · 24-bit · 2ch. Nothing playing.": the verdict in a sentence. Pure.
std::string verdictDetail(const Verdict& verdict, const SystemWords& words = {});

}  // namespace purlock
