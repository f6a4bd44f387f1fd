#pragma once

#include <QWidget>

namespace purlock::host_linux {

/// Keeps a window out of an X desktop's task bar and pager and shows it on every workspace (EWMH's
/// _NET_WM_STATE, for which Qt has no words). Each time before the window is shown, for a window manager
/// forgets it when the window is hidden. Does nothing elsewhere than on X. Main thread.
void keepOutOfWindowLists(QWidget& window);

}  // namespace purlock::host_linux
