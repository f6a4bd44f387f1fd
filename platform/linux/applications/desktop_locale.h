#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace purlock::host_linux {

/// The suffixes under which a localised key of a desktop file is looked for, the best first, for a locale
/// name such as "de_AT.UTF-8@euro": "de_AT@euro", "de_AT", "de@euro", "de" (Desktop Entry Specification,
/// "Localized values for keys"). "C", "POSIX" and an empty name have none. Pure; any thread.
std::vector<std::string> localeSuffixes(std::string_view locale);

/// The locale for messages: $LC_ALL, else $LC_MESSAGES, else $LANG; the first that is not empty.
std::string messagesLocale();

}  // namespace purlock::host_linux
