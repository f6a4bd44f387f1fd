#pragma once

#include <QApplication>
#include <memory>

namespace purlock::host_linux {

/// The toolkit, on the display that the user has chosen (QT_QPA_PLATFORM), else on X where there is one, also
/// under Wayland, for only there a window can be put under an icon; on Wayland otherwise; and on none at all
/// where there is neither, or none that answers, which it says on the console, so that the two files are
/// written there too. It waits for events by its own means rather than GLib's, which take longer and more
/// memory. What it is told by the environment for that is gone from there when this returns, so that programs
/// that are started from here are not told the same; but for what `spareOtherPrograms` takes away. It speaks
/// to screen readers whenever they come.
///
/// Once, in the main thread; the arguments have to outlive it.
std::unique_ptr<QApplication> startToolkit(int& argc, char** argv);

/// Keeps from the console what the toolkit says of a machine without a screen, a session or a locale, which
/// is no news to whoever starts the program there, and of a screen reader that asks for what is no longer
/// shown. Everything else is printed as ever. First of all.
void quietenToolkit();

/// Before another program is started from here: takes away what of the environment is meant for this one's
/// toolkit. Main thread.
void spareOtherPrograms();

/// Makes menus and tool tips as dark as the panel, whatever the desktop's colours are. Once, after the Qt
/// application object is made.
void applyDarkLook();

}  // namespace purlock::host_linux
