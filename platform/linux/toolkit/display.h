#pragma once

#include <QApplication>
#include <memory>

namespace purlock::host_linux {

/// Starts the toolkit on a display: on the one that the user has chosen (QT_QPA_PLATFORM), else on X, also
/// under Wayland, since only X lets a program put a window under an icon; else on Wayland. Where no display
/// answers it says so on the console and goes on without one, so that the two files are written there too.
/// The toolkit waits for events without GLib, which takes longer and more memory. Variables of the
/// environment tell the toolkit so. They are removed again before this returns, so that other programs do not
/// get them; `spareOtherPrograms` removes the rest. The toolkit speaks to screen readers, also to those that
/// start later.
///
/// Once, in the main thread; the arguments have to outlive it.
std::unique_ptr<QApplication> startToolkit(int& argc, char** argv);

/// Hides messages of the toolkit: those about a machine without a screen, a session or a locale, which are no
/// news to somebody who starts the program there, and those about a screen reader that asks for something
/// that is no longer shown. Everything else is printed. Called before anything else.
void quietenToolkit();

/// Removes the variables of the environment that are meant for this program's toolkit. Called before another
/// program is started. Main thread.
void spareOtherPrograms();

}  // namespace purlock::host_linux
