#include "platform/linux/applications/launchers.h"

#include <algorithm>
#include <array>

namespace purlock::host_linux {

namespace {

constexpr std::array<std::string_view, 34> launchers = {
    "bash",       "busybox", "dash",      "dbus-run-session",
    "electron",   "env",     "exo-open",  "fish",
    "flatpak",    "gio",     "gjs",       "gjs-console",
    "gtk-launch", "guile",   "java",      "ksh",
    "lua",        "mono",    "mono-sgen", "node",
    "nodejs",     "perl",    "php",       "pkexec",
    "python",     "ruby",    "sh",        "snap",
    "sudo",       "tclsh",   "wine",      "wish",
    "xdg-open",   "zsh"};

std::string_view withoutVersion(std::string_view name) {
    const std::size_t last = name.find_last_not_of("0123456789.");
    return last == std::string_view::npos ? name : name.substr(0, last + 1);
}

/// Options whose next word belongs to them.
bool takesAWord(std::string_view option) {
    return option == "-W" || option == "-X" || option == "-I" || option == "-L";
}

}  // namespace

bool isLauncher(std::string_view program) {
    const std::string_view name = withoutVersion(program.substr(program.find_last_of('/') + 1));
    return std::ranges::find(launchers, name) != launchers.end();
}

std::optional<std::string> scriptOf(const std::vector<std::string>& arguments) {
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "-c" || word == "-e") return std::nullopt;
        if (word == "-m") return i + 1 < arguments.size() ? std::optional(arguments[i + 1]) : std::nullopt;
        if (word.empty()) continue;
        if (word.front() != '-') return word;
        if (takesAWord(word)) ++i;
    }
    return std::nullopt;
}

}  // namespace purlock::host_linux
