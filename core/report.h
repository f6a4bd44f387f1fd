#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/uuid.h"
#include "core/verdict.h"

namespace purlock {

/// One hop of the signal path. Two stages built by two evaluations are never equal, for their `id` differs;
/// to find out if a report says something new, compare texts, kinds and the verdict.
struct SignalStage {
    enum class Kind {
        source,       // the application's own claim
        app,          // the process that plays
        halVirtual,   // the format that the system's mixer takes
        halPhysical,  // the format in which the device is clocked
        wire,         // the link to the device
        device,       // the device itself
    };

    /// How faithful the audio is here.
    enum class Quality {
        lossless,    // the full signal is known to pass
        formatOnly,  // a linear PCM format is known, but nothing of what it carries
        lossy,       // the stage is known to lose information
        unknown,
    };

    Uuid id = Uuid::random();
    Kind kind = Kind::source;
    std::string title;
    std::string primary;
    std::optional<std::string> secondary;
    std::optional<std::string> bitrate;
    Quality quality = Quality::unknown;

    bool operator==(const SignalStage&) const = default;
};

/// One finding: what is wrong, why, and what can be done. Equality includes the `id`, as with stages.
struct Diagnostic {
    enum class Severity { low, medium, high };

    Uuid id = Uuid::random();
    Severity severity = Severity::low;
    std::string title;
    std::string cause;
    std::string fix;
    std::optional<std::string> command = {};  // the part of the fix that is a command for a terminal

    bool operator==(const Diagnostic&) const = default;
};

/// The result of one analysis.
struct SignalPathReport {
    std::vector<SignalStage> stages;      // from the source to the device
    std::vector<Diagnostic> diagnostics;  // in the order in which they were found
    Verdict verdict = verdict::Unknown{};

    bool operator==(const SignalPathReport&) const = default;
};

}  // namespace purlock
