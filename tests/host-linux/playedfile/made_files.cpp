#include "tests/host-linux/playedfile/made_files.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace purlock::test {

namespace {

void append(std::string& bytes, std::uint64_t number, int size) {
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFFU);
}

std::string fromTheLargest(std::uint64_t number, int size) {
    std::string bytes;
    for (int i = size - 1; i >= 0; --i) bytes += static_cast<char>(number >> (8 * i) & 0xFFU);
    return bytes;
}

}  // namespace

bool runs(const std::vector<std::string>& command) {
    ChildProcess child(command, {"PATH=/usr/bin:/bin"}, {.log = "/dev/null"});
    return child.waitForExit(std::chrono::seconds(60)) == 0;
}

Probed probed(const std::string& path) {
    const TemporaryFolder folder;
    const std::string output = folder.path() / "output";
    ChildProcess child(
        {"ffprobe", "-v", "error", "-of", "default=nw=1", "-select_streams", "a:0", "-show_entries",
         "stream=sample_rate,channels,bits_per_sample,bits_per_raw_sample", path},
        {"PATH=/usr/bin:/bin"}, {.log = output});
    Probed result;
    if (child.waitForExit(std::chrono::seconds(60)) != 0) return result;
    std::istringstream lines(contentsOf(output));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t end = line.find('=');
        const int number = std::atoi(line.substr(end + 1).c_str());  // 0 for "N/A"
        const std::string key = line.substr(0, end);
        if (key == "sample_rate") result.rate = number;
        if (key == "channels") result.channels = number;
        if (key.starts_with("bits_per") && number != 0) result.depth = number;
    }
    return result;
}

bool makeSound(const std::string& path, int rate, int depth, int channels,
               const std::vector<std::string>& encoding) {
    const std::string sound = encoding.empty() ? path : path + ".wav";
    if (!runs({"sox", "-n", "-r", std::to_string(rate), "-b", std::to_string(depth), "-c",
               std::to_string(channels), sound, "synth", "2", "sine", "440", "vol", "0.1"})) {
        return false;
    }
    if (encoding.empty()) return true;
    if (encoding.front() == "wavpack") {
        std::vector<std::string> command = encoding;
        command.insert(command.end(), {"-q", "-y", sound, "-o", path});
        return runs(command);
    }
    std::vector<std::string> command = {"ffmpeg", "-v", "error", "-y", "-i", sound};
    command.insert(command.end(), encoding.begin(), encoding.end());
    command.push_back(path);
    return runs(command) && std::filesystem::remove(sound);
}

std::string monkeysAudioHeader(int rate, int depth, int channels) {
    std::string bytes = "MAC ";
    append(bytes, 3990, 4);  // version
    append(bytes, 52, 4);    // length of this descriptor
    append(bytes, 24, 4);    // length of the header
    bytes.append(36, '\0');
    append(bytes, 2000, 2);   // compression level
    append(bytes, 0, 2);      // flags
    append(bytes, 73728, 4);  // blocks a frame
    append(bytes, 1000, 4);   // blocks in the last frame
    append(bytes, 2, 4);      // frames
    append(bytes, static_cast<std::uint64_t>(depth), 2);
    append(bytes, static_cast<std::uint64_t>(channels), 2);
    append(bytes, static_cast<std::uint64_t>(rate), 4);
    return bytes + std::string(1000, 'x');
}

namespace {

/// A chunk as DSDIFF has them: a name, a length of eight bytes from the largest to the smallest, the content.
std::string chunk(const std::string& name, const std::string& content) {
    return name + fromTheLargest(content.size(), 8) + content;
}

}  // namespace

std::string dsdiffHeader(int rate, int channels) {
    std::string places = fromTheLargest(static_cast<std::uint64_t>(channels), 2);
    for (int i = 0; i < channels; ++i) places += "C" + std::to_string(100 + i);
    const std::string properties = "SND " +
                                   chunk("FS  ", fromTheLargest(static_cast<std::uint64_t>(rate), 4)) +
                                   chunk("CHNL", places) + chunk("CMPR", std::string("DSD \0", 5) + '\0');
    return chunk("FRM8", "DSD " + chunk("FVER", fromTheLargest(0x01050000, 4)) + chunk("PROP", properties) +
                             chunk("DSD ", std::string(4096, '\x69')));
}

std::string dsfHeader(int rate, int channels) {
    std::string bytes = "DSD ";
    append(bytes, 28, 8);
    append(bytes, 28 + 52 + 12 + 8192, 8);
    append(bytes, 0, 8);
    bytes += "fmt ";
    append(bytes, 52, 8);
    append(bytes, 1, 4);  // version
    append(bytes, 0, 4);  // DSD, raw
    append(bytes, static_cast<std::uint64_t>(channels), 4);
    append(bytes, static_cast<std::uint64_t>(channels), 4);
    append(bytes, static_cast<std::uint64_t>(rate), 4);
    append(bytes, 1, 4);  // bit a sample
    append(bytes, 32768, 8);
    append(bytes, 4096, 4);
    append(bytes, 0, 4);
    bytes += "data";
    append(bytes, 12 + 8192, 8);
    return bytes + std::string(8192, '\x69');
}

}  // namespace purlock::test
