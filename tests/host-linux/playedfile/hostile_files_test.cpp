#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "platform/linux/playedfile/audio_file_reader.h"
#include "platform/linux/playedfile/bounded_stream.h"
#include "platform/linux/playedfile/played_files.h"
#include "platform/linux/system/file_descriptor.h"
#include "tests/host-linux/playedfile/made_files.h"
#include "tests/support/sanitizers.h"
#include "tests/support/temporary_folder.h"

/// Reading is cut short by an exception that goes through the library's constructors, and what they have made
/// by then is lost: so only a few files are ever cut short. LeakSanitizer asks for this list by this name.
extern "C" const char* __lsan_default_suppressions();   // NOLINT
extern "C" const char* __lsan_default_suppressions() {  // NOLINT
    return "leak:libtag";
}

namespace purlock::host_linux {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class HostileFiles : public ::testing::Test {
  protected:
    std::string path(const char* name) const { return folder_.path() / name; }

    /// Whatever comes of it, it comes soon.
    std::optional<PlayedFile> readInTime(const char* name) const {
        const auto start = Clock::now();
        auto file = readPlayedFile(path(name));
        EXPECT_LT(Clock::now() - start, test::isSanitized ? 20s : 4s) << name;
        return file;
    }

    const test::TemporaryFolder folder_;
};

TEST_F(HostileFiles, WhatIsNoRegularFileIsNotOpened) {
    ASSERT_EQ(mkfifo(path("pipe.flac").c_str(), 0600), 0);
    std::filesystem::create_directory(path("folder.flac"));
    std::filesystem::create_symlink("/dev/zero", path("device.flac"));
    std::filesystem::create_symlink("loop.flac", path("loop.flac"));
    std::filesystem::create_symlink(path("pipe.flac"), path("link.flac"));
    for (const char* name :
         {"pipe.flac", "folder.flac", "device.flac", "loop.flac", "link.flac", "none.flac"}) {
        EXPECT_EQ(readInTime(name), std::nullopt) << name;
    }
}

TEST_F(HostileFiles, EmptyZeroRandomAndSparseFilesSayNothing) {
    folder_.write("empty.flac", "");
    folder_.write("zero.flac", std::string(1 << 20, '\0'));
    std::mt19937 random(4711);
    std::string bytes(1 << 20, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    folder_.write("random.flac", bytes);
    folder_.write("sparse.flac", "fLaC");
    std::filesystem::resize_file(path("sparse.flac"), std::uintmax_t{1} << 40U);
    for (const char* name : {"empty.flac", "zero.flac", "random.flac", "sparse.flac"}) {
        EXPECT_EQ(readInTime(name), std::nullopt) << name;
    }
}

/// A file cut anywhere, with each signature over what is another kind's, and with any byte of its head
/// turned.
TEST_F(HostileFiles, EveryDamageEndsWithAnAnswer) {
    ASSERT_TRUE(test::makeSound(path("a.flac"), 44100, 16, 2));
    ASSERT_TRUE(test::makeSound(path("a.wav"), 44100, 16, 2));
    ASSERT_TRUE(test::makeSound(path("a.m4a"), 44100, 16, 2, {"-c:a", "alac"}));
    ASSERT_TRUE(test::makeSound(path("a.ogg"), 44100, 16, 2, {"-c:a", "libvorbis"}));
    ASSERT_TRUE(test::makeSound(path("a.mp3"), 44100, 16, 2, {"-c:a", "libmp3lame"}));
    ASSERT_TRUE(test::makeSound(path("a.wma"), 44100, 16, 2, {"-c:a", "wmav2"}));
    std::mt19937 random(4711);
    for (const char* name : {"a.flac", "a.wav", "a.m4a", "a.ogg", "a.mp3", "a.wma"}) {
        const std::string whole = test::contentsOf(path(name));
        for (std::size_t length = 0; length < 600; length += 7) {
            folder_.write("damaged", whole.substr(0, length));
            readInTime("damaged");
        }
        for (int round = 0; round < 150; ++round) {
            std::string damaged = whole;
            for (int i = 0; i < 4; ++i) damaged[random() % 800] = static_cast<char>(random());
            folder_.write("damaged", damaged);
            readInTime("damaged");
        }
        for (const std::string start : {"fLaC", "wvpk", "MAC ", "TTA1", "MPCK", "MP+\7", "OggS", "ID3\4"}) {
            folder_.write("damaged", start + whole.substr(4));
            readInTime("damaged");
        }
    }
}

/// A picture in a FLAC file may have 16 MB, and a file any number of them.
TEST_F(HostileFiles, ManyLargeBlocksAreBoundedInMemory) {
    ASSERT_TRUE(test::makeSound(path("a.flac"), 44100, 16, 2));
    std::string file = test::contentsOf(path("a.flac")).substr(0, 42);
    constexpr std::size_t blockBytes = (1U << 24U) - 1;
    for (int i = 0; i < 12; ++i) file += std::string("\x06\xFF\xFF\xFF", 4) + std::string(blockBytes, 'p');
    folder_.write("pictures.flac", file);
    file = {};
    malloc_trim(0);
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    readInTime("pictures.flac");
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    if (test::isSanitized) return;
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 200 * 1024);
}

TEST_F(HostileFiles, WhatLiesBeyondTheLimitsIsNotRead) {
    ASSERT_TRUE(test::makeSound(path("a.flac"), 44100, 16, 2));
    const FileDescriptor file(::open(path("a.flac").c_str(), O_RDONLY | O_CLOEXEC));
    const auto size = std::filesystem::file_size(path("a.flac"));
    const AudioReading whole = readAudioFile(file.get(), size);
    EXPECT_TRUE(whole.file);
    EXPECT_FALSE(whole.isCutShort);
    AudioReadLimits few;
    few.reads = 2;
    AudioReadLimits little;
    little.totalBytes = 530;
    AudioReadLimits late;
    late.time = -1ms;
    for (const AudioReadLimits& limits : {few, little, late}) {
        const AudioReading cut = readAudioFile(file.get(), size, limits);
        EXPECT_EQ(cut.file, std::nullopt);
        EXPECT_TRUE(cut.isCutShort);
    }
}

/// A count in the file's header that says how many attributes follow, where none does: the library asks for
/// each of them.
std::string windowsMediaWithCounts(int objects) {
    const auto number = [](std::uint64_t value, int size) {
        std::string bytes;
        for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
        return bytes;
    };
    const std::string header = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9" + std::string(2, '\0') +
                               "\x62\xCE\x6C" + std::string(1, '\0');
    const std::string extended =
        "\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0" + std::string(1, '\0') + "\xA0\xC9\x5E\xA8\x50";
    std::string file = header.substr(0, 11) + "\xAA" + std::string(1, '\0') + header.substr(12) +
                       number(30 + 26 * static_cast<std::uint64_t>(objects), 8) +
                       number(static_cast<std::uint64_t>(objects), 4) + "\1\2";
    for (int i = 0; i < objects; ++i) file += extended + number(26, 8) + number(0xFFFF, 2);
    return file;
}

TEST_F(HostileFiles, CountsThatPromiseWhatIsNotThereEnd) {
    folder_.write("counts.wma", windowsMediaWithCounts(2000));
    EXPECT_EQ(readInTime("counts.wma"), std::nullopt);
}

}  // namespace
}  // namespace purlock::host_linux
