#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/alsa/eld_text.h"
#include "platform/linux/alsa/pcm_text.h"

namespace purlock::host_linux {

/// A playback PCM by its numbers, as in "hw:1,3,0".
struct PcmAddress {
    std::uint32_t card = 0;
    std::uint32_t device = 0;
    std::uint32_t subdevice = 0;

    auto operator<=>(const PcmAddress&) const =
        default;  // NOLINT(modernize-use-nullptr): it means the default's own 0
};

/// The process that has a PCM open.
struct PcmOwner {
    std::int32_t processIdentifier = 0;
    std::string command;  // the process's short name, at most 15 bytes

    bool operator==(const PcmOwner&) const = default;
};

/// What the kernel says of one playback PCM at one moment.
struct PcmInfo {
    PcmStatus status;
    std::optional<HardwareParameters> parameters;  // absent while closed or not set up
    std::optional<PcmOwner> owner;  // absent while closed, and when the process cannot be found

    bool operator==(const PcmInfo&) const = default;
};

/// The sound cards as the kernel sees them, whatever the audio daemon believes: small files, read afresh at
/// each call in some 10 µs a file. Any thread. A card that is not there is a closed PCM without a monitor.
class SoundCards {
  public:
    /// `processFileSystem` is where the proc file system is mounted; tests put a folder of theirs in its
    /// place.
    explicit SoundCards(std::string processFileSystem = "/proc") : root_(std::move(processFileSystem)) {}

    PcmInfo pcm(const PcmAddress& address) const;

    /// How the monitor behind an HDMI or DisplayPort PCM is attached. With several monitors on one card, the
    /// one whose name stands in `description` is taken, else the one at the PCM's place in the order of the
    /// PCMs: the kernel does not say which monitor belongs to which PCM in any of these files.
    EldConnection displayConnection(const PcmAddress& address, std::string_view description) const;

  private:
    std::optional<PcmOwner> ownerOfThread(std::int32_t thread) const;
    std::vector<std::pair<std::uint32_t, Eld>> monitors(std::uint32_t card) const;

    const std::string root_;
};

}  // namespace purlock::host_linux
