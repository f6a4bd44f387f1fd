#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/linux/playedfile/audio_file_kind.h"
#include "platform/linux/playedfile/audio_file_reader.h"
#include "platform/linux/playedfile/file_url.h"

namespace {

/// The file's bytes, in memory.
int fileOf(const std::uint8_t* data, std::size_t size) {
    static const int file = memfd_create("fuzz", MFD_CLOEXEC);
    if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
    return file;
}

}  // namespace

/// Files that are cut short lose some memory, which the program bounds by their number.
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}

/// The whole step: what kind of file it is, what the tag library reads of it, what is made of that.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace purlock;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (const auto path = host_linux::localPathOf(bytes)) {
        if (!path->starts_with('/') || path->find('\0') != path->npos) std::abort();
    }
    const auto file = host_linux::readAudioFile(fileOf(data, size), size).file;
    if (!file) return 0;
    if (file->codec.empty() || !file->sampleRate || !(*file->sampleRate >= 1000)) std::abort();
    if (file->bitDepth && (*file->bitDepth < 1 || *file->bitDepth > 64)) std::abort();
    if (file->bitsPerSecond && !(std::isfinite(*file->bitsPerSecond) && *file->bitsPerSecond > 0)) {
        std::abort();
    }
    return 0;
}
