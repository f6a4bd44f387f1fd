#pragma once

namespace purlock::host_linux {

/// Has screen readers meet the panel as a person reads it: a dialog with its texts and controls in reading
/// order, and nothing in between. The toolkit by itself would show every row, column and gap as an element
/// without a name, and its menus would answer a request to open only once they are closed again.
///
/// Once, after the application object is made. Main thread.
void describePanelToScreenReaders();

/// The name of the property of a widget that a screen reader comes to after its siblings.
inline constexpr const char* readLastProperty = "purlockReadLast";

}  // namespace purlock::host_linux
