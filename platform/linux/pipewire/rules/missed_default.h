#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/pipewire/rules/records.h"

namespace purlock::host_linux {

/// A sign that a change of the default device was missed: no application's stream leads to the named default,
/// but some lead to other sinks. Or the user has moved them there.
struct MissedDefault {
    std::string named;
    std::vector<std::uint64_t> sinks;  // serials of those that streams lead to

    bool operator==(const MissedDefault&) const = default;
};

/// Absent where there is no such sign. Pure.
std::optional<MissedDefault> missedDefault(const AudioGraph& graph);

}  // namespace purlock::host_linux
