#include "platform/linux/system/directories.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <string>

namespace purlock::host_linux {

namespace fs = std::filesystem;

namespace {

std::optional<fs::path> absolute(const std::optional<std::string>& text) {
    if (!text || !text->starts_with('/')) return std::nullopt;
    return fs::path(*text);
}

std::optional<fs::path> homeOfUserDatabase() {
    std::array<char, 16384> buffer;
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) {
        return std::nullopt;
    }
    return absolute(found->pw_dir);
}

std::optional<fs::path> userDirectory(const Environment& environment, const char* variable,
                                      const char* fallback) {
    if (auto named = absolute(environment(variable))) return named;
    const auto home = homeDirectory(environment);
    return home ? std::optional(*home / fallback) : std::nullopt;
}

}  // namespace

std::optional<fs::path> homeDirectory(const Environment& environment) {
    if (auto home = absolute(environment("HOME"))) return home;
    return homeOfUserDatabase();
}

std::optional<fs::path> configDirectory(const Environment& environment) {
    return userDirectory(environment, "XDG_CONFIG_HOME", ".config");
}

std::optional<fs::path> dataDirectory(const Environment& environment) {
    return userDirectory(environment, "XDG_DATA_HOME", ".local/share");
}

}  // namespace purlock::host_linux
