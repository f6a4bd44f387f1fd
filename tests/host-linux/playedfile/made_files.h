#pragma once

#include <string>
#include <vector>

namespace purlock::test {

/// Runs a program to its end; whether it succeeded.
bool runs(const std::vector<std::string>& command);

/// What ffprobe, a second opinion, finds in a file. The depth is 0 where the codec has none.
struct Probed {
    int rate = 0;
    int channels = 0;
    int depth = 0;
};
Probed probed(const std::string& path);

/// A file of sound of two seconds: sox makes it, as a WAV file of that rate, depth and channels, and ffmpeg
/// encodes it with these options where there are any, or wavpack if that is the first of them.
bool makeSound(const std::string& path, int rate, int depth, int channels,
               const std::vector<std::string>& encoding = {});

/// A header of Monkey's Audio 3.99 without sound: nothing in Debian writes such files.
std::string monkeysAudioHeader(int rate, int depth, int channels);

/// A DSF file without sound.
std::string dsfHeader(int rate, int channels);

/// A DSDIFF file with a little silence.
std::string dsdiffHeader(int rate, int channels);

}  // namespace purlock::test
