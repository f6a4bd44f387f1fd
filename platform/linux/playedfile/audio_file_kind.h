#pragma once

#include <cstdint>
#include <string_view>

namespace purlock::host_linux {

/// Which of the library's readers understands a file.
enum class AudioFileKind {
    unknown,
    flac,
    wav,
    aiff,
    mp4,
    wavPack,
    monkeysAudio,
    trueAudio,
    dsf,
    dsdiff,
    mpeg,
    vorbis,
    opus,
    oggFlac,
    speex,
    musepack,
    asf,
};

/// The kind by the file's first bytes; its name does not count. 512 bytes are enough for all kinds. Pure; any
/// thread.
AudioFileKind audioFileKindOf(std::string_view start);

/// The length of the ID3v2 tag at the file's start, header and footer included (id3v2.4.0-structure, 3.1); 0
/// when there is none. The first ten bytes tell.
std::uint64_t leadingTagLength(std::string_view start);

}  // namespace purlock::host_linux
