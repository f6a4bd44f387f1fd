#pragma once

#include <taglib.h>
#include <tiostream.h>

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace purlock::host_linux {

/// How much of one file is read at most. A block that is too large is cut; beyond the other limits reading
/// ends with `AudioReadEnded`.
struct AudioReadLimits {
    std::size_t blockBytes = 16U << 20U;  // at once: a picture in a FLAC file has up to this
    std::size_t totalBytes = 64U << 20U;
    std::size_t reads = 20'000;  // also those at the file's end, of which a damaged file can cause millions
    std::chrono::milliseconds time{3000};
};

/// Thrown through the tag library, which asks on and on where a count in the file says so and has no other
/// way to be stopped. It loses some memory then, so that files which do this must not be read without end.
struct AudioReadEnded {};

/// The tag library's access to a file, from `start` on: reads are bounded, and nothing is ever written. The
/// owner of the descriptor keeps it. On one thread.
class BoundedStream final : public TagLib::IOStream {
  public:
#if TAGLIB_MAJOR_VERSION >= 2
    using Offset = TagLib::offset_t;
    using Place = TagLib::offset_t;
    using Size = std::size_t;
#else
    using Offset = long;
    using Place = unsigned long;
    using Size = unsigned long;
#endif

    BoundedStream(int descriptor, std::uint64_t start, std::uint64_t end, const AudioReadLimits& limits);

    /// The first bytes, as many as there are up to `size`.
    TagLib::ByteVector firstBytes(std::size_t size);

    TagLib::FileName name() const override {
        return "";
    }
    TagLib::ByteVector readBlock(Size length) override;
    void writeBlock(const TagLib::ByteVector& /*data*/) override {}
    void insert(const TagLib::ByteVector& /*data*/, Place /*start*/, Size /*replace*/) override {}
    void removeBlock(Place /*start*/, Size /*length*/) override {}
    bool readOnly() const override {
        return true;
    }
    bool isOpen() const override {
        return true;
    }
    void seek(Offset offset, Position position) override;
    Offset tell() const override {
        return place_;
    }
    Offset length() override {
        return end_;
    }
    void truncate(Offset /*length*/) override {}

  private:
    void count(std::size_t bytes);

    const int descriptor_;
    const std::uint64_t start_;
    const Offset end_;
    AudioReadLimits left_;
    const std::chrono::steady_clock::time_point deadline_;
    Offset place_ = 0;
};

}  // namespace purlock::host_linux
