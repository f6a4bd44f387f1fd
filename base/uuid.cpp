#include "base/uuid.h"

#include <sys/random.h>

#include <algorithm>
#include <cstddef>

#include "base/fatal.h"

namespace purlock {

namespace {

/// Random bytes fetched a block at a time: one system call serves sixteen identifiers. 256 is the most that
/// getentropy gives in one call.
class RandomBytes {
  public:
    void take(std::array<std::uint8_t, 16>& bytes) {
        if (used_ == block_.size()) {
            if (getentropy(block_.data(), block_.size()) != 0) fatalStop("no random source");
            used_ = 0;
        }
        std::copy_n(block_.begin() + static_cast<std::ptrdiff_t>(used_), bytes.size(), bytes.begin());
        used_ += bytes.size();
    }

  private:
    std::array<std::uint8_t, 256> block_{};
    std::size_t used_ = block_.size();
};

}  // namespace

Uuid Uuid::random() {
    thread_local RandomBytes source;
    Uuid uuid;
    source.take(uuid.bytes);
    uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);  // version 4
    uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);  // the variant of RFC 9562
    return uuid;
}

std::string Uuid::text() const {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0x0F];
    }
    return text;
}

}  // namespace purlock
