#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/system/file_descriptor.h"

namespace purlock::host_linux {

/// The factor of a position of a volume control whose scale is in steps of decibels, as its TLV data say:
/// SNDRV_CTL_TLVT_DB_SCALE, a minimum and a step in 1/100 dB, and whether the lowest position is silence
/// (include/uapi/sound/tlv.h of the kernel). Pure.
double factorOfScale(std::int32_t least, std::uint32_t step, std::int64_t position, bool isLowestSilent);

/// The volumes that ALSA's library applies in software ("softvol") on the way to a card. Volume controls show
/// them beside those of the hardware, since the library adds them to the card as controls; the kernel says
/// which controls came from programs. The common PCMs of built-in sound ("front", "surround51") go through
/// one.
///
/// A card's control device stays open between the questions: opening it would wake all who watch for that.
/// One thread.
class LibraryVolumes {
  public:
    /// `soundDevices` is the folder with the device files.
    explicit LibraryVolumes(std::string soundDevices = "/dev/snd") : folder_(std::move(soundDevices)) {}

    /// The factor of the channel that is changed most; 1 when none is. Absent when the card has no such
    /// control, or may not be asked.
    std::optional<double> of(std::uint32_t card);

    /// Closes the devices of all cards for which `isWanted` says no.
    template <typename Question>
    void keepOnly(Question isWanted) {
        std::erase_if(devices_, [&](const auto& each) { return !isWanted(each.first); });
    }

  private:
    const std::string folder_;
    std::map<std::uint32_t, FileDescriptor> devices_;
};

}  // namespace purlock::host_linux
