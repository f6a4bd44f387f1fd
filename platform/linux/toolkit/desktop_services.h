#pragma once

#include "ui/window_seams.h"

namespace purlock::host_linux {

/// The program among the others of the desktop. Main thread only.
class QtApplication final : public Application {
  public:
    /// Nothing to do: a program without a main window stands in no dock, and its panel's kind of window in no
    /// list of windows.
    void setActivationPolicy(ActivationPolicy policy) override;

    /// Nothing to do: a window that is shown asks for the focus itself.
    void activateIgnoringOtherApps() override;

    void terminate() override;
};

/// Opens files as the desktop does. Main thread only.
class QtWorkspace final : public Workspace {
  public:
    /// A file that is not there yet is shown by its folder. Does nothing when the desktop has no program for
    /// it. Returns at once.
    void openURL(const std::filesystem::path& file) override;
};

}  // namespace purlock::host_linux
