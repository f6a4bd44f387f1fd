#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace purlock::host_linux {

/// The parts of a desktop file that this host uses (Desktop Entry Specification 1.5).
struct DesktopEntry {
    std::optional<std::string> name;       // in the reader's language, else as it stands without one
    std::vector<std::string> executables;  // the programs that TryExec and Exec name, with or without a path
    bool isApplication = false;
    bool isHidden = false;    // counts as deleted
    bool isNotShown = false;  // in no menu: a shell, a helper, a handler
    bool isTerminal = false;  // a terminal emulator, whose children are not part of it

    bool operator==(const DesktopEntry&) const = default;
};

/// Reads the text of a desktop file: only its group [Desktop Entry]. All that is malformed counts as missing.
/// `suffixes` are those of `localeSuffixes`. Pure; any thread.
DesktopEntry parseDesktopEntry(std::string_view text, std::span<const std::string> suffixes);

/// The program that an Exec line starts: its first word by the quoting rules of desktop entries, past "env"
/// and its assignments; absent when there is none.
std::optional<std::string> executableOfCommand(std::string_view command);

}  // namespace purlock::host_linux
