#pragma once

#include "ui/window_seams.h"

namespace purlock::host_macos {

// AppKit's small services, as the shell asks for them. Main thread only.

class SharedApplication final : public Application {
  public:
    void setActivationPolicy(ActivationPolicy policy) override;
    void activateIgnoringOtherApps() override;
    void terminate() override;
};

/// Events that go to other programs; those inside the panel are not among them.
class GlobalEventMonitor final : public EventMonitor {
  public:
    Cancellable addGlobalMonitor(Mask mask, std::function<void()> handler) override;
};

class SharedWorkspace final : public Workspace {
  public:
    void openURL(const std::filesystem::path& file) override;
};

/// The system's own dialogue.
class SystemAccessibilityPrompt final : public AccessibilityPrompt {
  public:
    void request() override;
};

}  // namespace purlock::host_macos
