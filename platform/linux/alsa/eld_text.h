#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace purlock::host_linux {

enum class EldConnection { unknown, hdmi, displayPort };

/// What a monitor says about its own sound, as the kernel prints it in /proc/asound/card<N>/eld#<codec>.<pin>
/// (sound/pci/hda/hda_eld.c). Only of use when `isValid`.
struct Eld {
    bool isMonitorPresent = false;
    bool isValid = false;
    EldConnection connection = EldConnection::unknown;
    std::optional<std::string> monitorName;

    bool operator==(const Eld&) const = default;
};

/// Pure; no input makes it fail.
Eld parseEld(std::string_view text);

}  // namespace purlock::host_linux
