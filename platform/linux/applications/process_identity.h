#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace purlock::host_linux {

// The application that a process belongs to, by the texts of its sandbox and its control group. Pure readers
// of bounded texts; any thread. An identifier that could be no desktop file's name counts as missing.

/// Reads the text of a sandbox's /.flatpak-info: the key "name" of the group [Application]
/// (flatpak-metadata(5)).
std::optional<std::string> applicationOfFlatpakInfo(std::string_view text);

/// Reads the text of /proc/<pid>/cgroup: the innermost unit, if its name is an application's as systemd's
/// desktop integration asks for (app[-<launcher>]-<id>-<random>.scope,
/// app[-<launcher>]-<id>[@<random>].service, systemd's DESKTOP_ENVIRONMENTS) or a snap's
/// (snap.<snap>.<application>-<random>.scope), whose desktop file is "<snap>_<application>".
std::optional<std::string> applicationOfControlGroup(std::string_view text);

/// The fields of /proc/<pid>/stat that matter here (proc(5)).
struct ProcessStatus {
    std::int32_t parent = 0;
    std::int32_t session = 0;
    std::uint64_t startTime = 0;  // in clock ticks since boot

    bool operator==(const ProcessStatus&) const = default;
};
std::optional<ProcessStatus> parseProcessStatus(std::string_view text);

}  // namespace purlock::host_linux
