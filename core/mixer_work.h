#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "core/audio_format.h"

namespace purlock {

/// A mixer may do these things to the samples besides converting their rate and depth. A volume is the number
/// that a volume control shows: 1 for 100 %, at which the samples stay as they are.
namespace alteration {

/// The mixer applies the volume of an application's stream.
struct StreamVolume {
    std::string application;
    double volume = 1;
    bool operator==(const StreamVolume&) const = default;
};

struct StreamMute {
    std::string application;
    bool operator==(const StreamMute&) const = default;
};

/// The stream's channels do not each arrive in the device's channel of the same place.
struct Channels {
    std::string application;
    std::uint32_t from = 0;
    std::uint32_t to = 0;
    bool operator==(const Channels&) const = default;
};

/// A filter works on the sound between the application and the device.
struct Filter {
    std::string name;
    bool operator==(const Filter&) const = default;
};

/// Streams of these applications are added to the one that is judged.
struct Mixed {
    std::vector<std::string> applications;
    bool operator==(const Mixed&) const = default;
};

/// The mixer, not the hardware, applies the volume of a device on the way.
struct DeviceVolume {
    std::string device;
    double volume = 1;
    bool operator==(const DeviceVolume&) const = default;
};

struct DeviceMute {
    std::string device;
    bool operator==(const DeviceMute&) const = default;
};

/// The device follows the clock of another one, so what it plays is resampled to keep pace with it.
struct Clock {
    std::string device;
    std::string leader;
    bool operator==(const Clock&) const = default;
};

/// Noise is added before the samples are rounded.
struct Dither {
    std::string device;
    bool operator==(const Dither&) const = default;
};

/// Nothing of what plays reaches the watched device; it goes to `device` instead.
struct Elsewhere {
    std::string application;
    std::string device;
    std::string watched;
    bool operator==(const Elsewhere&) const = default;
};

}  // namespace alteration

using Alteration =
    std::variant<alteration::StreamVolume, alteration::StreamMute, alteration::Channels, alteration::Filter,
                 alteration::Mixed, alteration::DeviceVolume, alteration::DeviceMute, alteration::Clock,
                 alteration::Dither, alteration::Elsewhere>;

/// Why the mixer converts a rate.
namespace rate_reason {

/// None of the device's formats has the rate.
struct DeviceCannot {
    bool operator==(const DeviceCannot&) const = default;
};

/// The system's settings give the device one rate, which is another.
struct DeviceIsSet {
    bool operator==(const DeviceIsSet&) const = default;
};

/// The mixer may not switch to the rate.
struct NotAllowed {
    std::vector<std::uint32_t> allowed;  // Hz, those to which it may; never empty
    bool operator==(const NotAllowed&) const = default;
};

/// The system's settings force another rate.
struct Forced {
    bool operator==(const Forced&) const = default;
};

/// A stream of this application forces another rate.
struct ForcedByStream {
    std::string application;
    bool operator==(const ForcedByStream&) const = default;
};

/// A stream of this application keeps the mixer at its own rate.
struct HeldByStream {
    std::string application;
    bool operator==(const HeldByStream&) const = default;
};

}  // namespace rate_reason

using RateReason = std::variant<rate_reason::DeviceCannot, rate_reason::DeviceIsSet, rate_reason::NotAllowed,
                                rate_reason::Forced, rate_reason::ForcedByStream, rate_reason::HeldByStream>;

/// A conversion of the rate between an application and the device. Rates are in Hz.
struct RateConversion {
    double streamRate = 0;
    double mixerRate = 0;              // at which the mixer works, on the device's side
    std::optional<RateReason> reason;  // absent when it is not known

    bool operator==(const RateConversion&) const = default;
};

/// What the host knows of the mixer's work on the watched device. Where it is passed as an optional, absent
/// means that the host cannot know.
struct MixerWork {
    std::vector<Alteration> alterations;                // in the order in which the mixer works
    std::optional<std::string> linkCodec = {};          // in which it sends the sound over the air: "LDAC"
    std::optional<RateConversion> rateConversion = {};  // for which the two formats stand
    std::optional<AudioFormat> streamFormat = {};       // in which a process hands over what is judged
    std::optional<std::int32_t> streamProcess = {};     // that process
    std::optional<std::string> unseenProgram = {};  // it has the device, and hides what it does to the sound

    bool operator==(const MixerWork&) const = default;
};

}  // namespace purlock
