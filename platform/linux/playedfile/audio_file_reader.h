#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/playback.h"

namespace purlock::host_linux {

struct AudioReadLimits;

/// What was read of a file.
struct AudioReading {
    std::optional<PlayedFile> file;
    bool isCutShort = false;  // a limit ended it; some memory is lost then
};

/// Reads the audio properties of an open regular file of `size` bytes. Its name does not count. Absent when
/// the tag library does not know its kind, or when it is not whole. Takes as long as the file's disk, within
/// the limits; on a thread that may wait.
///
/// Lossless: FLAC (also in Ogg), WAV and AIFF with PCM, ALAC, WavPack, Monkey's Audio, True Audio, lossless
/// WMA; DSF and DSDIFF from TagLib 2 on. Lossy: MP3, AAC in MP4, Vorbis, Opus, Speex, Musepack, WMA, WavPack
/// that says so, and WAV and AIFF with anything else inside.
AudioReading readAudioFile(int descriptor, std::uint64_t size);
AudioReading readAudioFile(int descriptor, std::uint64_t size, const AudioReadLimits& limits);

}  // namespace purlock::host_linux
