#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_hardware.h"
#include "core/audio_format.h"

namespace purlock {

// Typed reads of one property each, over the raw ones of the hardware layer. All on the main element. What
// the layer says of sizes is not trusted: a value that shrinks between the size and the data is read as far
// as it goes.

/// The size of the value in bytes; absent when the layer refuses.
std::optional<std::uint32_t> readSize(AudioProperties& hardware, AudioObjectID object, std::uint32_t selector,
                                      std::uint32_t scope);

/// A list of object ids, in the layer's order; absent when either read fails or the size is beyond all
/// reason.
std::optional<std::vector<AudioObjectID>> readObjects(AudioProperties& hardware, AudioObjectID object,
                                                      std::uint32_t selector, std::uint32_t scope);

/// A text of the global scope; absent when the read fails or there is none.
std::optional<std::string> readText(AudioProperties& hardware, AudioObjectID object, std::uint32_t selector);

/// A 32-bit value of the global scope. `value` keeps what it holds unless the layer writes it.
HardwareStatus readValue(AudioProperties& hardware, AudioObjectID object, std::uint32_t selector,
                         std::uint32_t& value);

/// A 32-bit flag of the global scope: true only when the read succeeds and the value is not 0.
bool readFlag(AudioProperties& hardware, AudioObjectID object, std::uint32_t selector);

/// The device's output streams; empty when they cannot be read.
std::vector<AudioObjectID> outputStreams(AudioProperties& hardware, AudioObjectID device);

/// A stream's format, taken as the layer gives it; absent when the read fails.
std::optional<AudioFormat> streamFormat(AudioProperties& hardware, AudioObjectID stream,
                                        std::uint32_t selector);

}  // namespace purlock
