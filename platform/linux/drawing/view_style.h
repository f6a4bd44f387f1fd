#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <string>

#include "ui/view.h"

namespace purlock::host_linux {

// The panel's values in Qt's terms. Main thread only.

QColor qtColor(const Color& color);

/// The desktop's own font; sizes are logical pixels, so that a panel is as large as its layout says.
QFont qtFont(const Font& font);

/// A text as one may show it on a line: control characters, line breaks among them, become spaces, and what
/// is longer than 2000 characters ends there.
QString lineText(const std::string& text);

/// A text for a tool tip, which would otherwise take some texts for markup and show long ones on one line.
QString toolTipText(const QString& text);

/// A text for a menu or a check box, where an ampersand marks a key.
QString withoutMnemonics(QString text);

}  // namespace purlock::host_linux
