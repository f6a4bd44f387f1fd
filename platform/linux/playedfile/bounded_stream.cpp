#include "platform/linux/playedfile/bounded_stream.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace purlock::host_linux {

BoundedStream::BoundedStream(int descriptor, std::uint64_t start, std::uint64_t end,
                             const AudioReadLimits& limits)
    : descriptor_(descriptor),
      start_(start),
      end_(end > start ? static_cast<Offset>(end - start) : 0),
      left_(limits),
      deadline_(std::chrono::steady_clock::now() + limits.time) {}

void BoundedStream::count(std::size_t bytes) {
    if (left_.reads == 0 || left_.totalBytes < bytes || std::chrono::steady_clock::now() > deadline_) {
        throw AudioReadEnded{};
    }
    --left_.reads;
    left_.totalBytes -= bytes;
}

TagLib::ByteVector BoundedStream::firstBytes(std::size_t size) {
    seek(0, Beginning);
    const TagLib::ByteVector bytes = readBlock(static_cast<Size>(size));
    seek(0, Beginning);
    return bytes;
}

TagLib::ByteVector BoundedStream::readBlock(Size length) {
    const auto left = static_cast<std::size_t>(std::max<Offset>(end_ - place_, 0));
    const std::size_t wanted = std::min({static_cast<std::size_t>(length), left_.blockBytes, left});
    count(wanted);
    if (wanted == 0) return {};
    TagLib::ByteVector bytes(static_cast<unsigned>(wanted), '\0');
    std::size_t count = 0;
    while (count < wanted) {
        const ssize_t read = ::pread(descriptor_, bytes.data() + count, wanted - count,
                                     static_cast<off_t>(start_) + place_ + static_cast<off_t>(count));
        if (read < 0 && errno == EINTR) continue;
        if (read <= 0) break;  // an error, or the file has become shorter
        count += static_cast<std::size_t>(read);
    }
    bytes.resize(static_cast<unsigned>(count));
    place_ += static_cast<Offset>(count);
    return bytes;
}

void BoundedStream::seek(Offset offset, Position position) {
    Offset base = 0;
    if (position == Current) base = place_;
    if (position == End) base = end_;
    Offset place = 0;
    if (__builtin_add_overflow(base, offset, &place) || place < 0) place = 0;
    place_ = place;
}

}  // namespace purlock::host_linux
