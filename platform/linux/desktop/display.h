#pragma once

namespace purlock::host_linux {

/// Decides on which display the program shows itself, unless the user has (QT_QPA_PLATFORM): on X where there
/// is one, also under Wayland, for only there a window can be put under an icon; on Wayland otherwise; and on
/// none at all where there is neither, so that the two files are written there too. Before the Qt application
/// object is made.
void chooseDisplay();

/// Keeps from the console what the toolkit says of a machine without a screen or a session, which is no news
/// to whoever starts the program there. Everything else is printed as ever. First of all.
void quietenToolkit();

/// Makes menus and tool tips as dark as the panel, whatever the desktop's colours are. Once, after the Qt
/// application object is made.
void applyDarkLook();

}  // namespace purlock::host_linux
