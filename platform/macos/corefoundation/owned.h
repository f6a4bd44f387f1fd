#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace purlock::host_macos {

/// One reference to a CoreFoundation object, released at the end. For what functions with Create or Copy in
/// their names return, and for the texts that the audio layer hands out; what a Get function returns is
/// borrowed and is either used at once or taken with `retained`.
template <typename Reference>
class Owned {
  public:
    Owned() = default;

    /// Takes over a reference that the caller owns; null is none.
    explicit Owned(Reference reference) : reference_(reference) {}

    /// A further reference to a borrowed object.
    static Owned retained(Reference borrowed) {
        if (borrowed != nullptr) CFRetain(borrowed);
        return Owned(borrowed);
    }

    Owned(Owned&& other) noexcept : reference_(std::exchange(other.reference_, nullptr)) {}
    Owned& operator=(Owned&& other) noexcept {
        std::swap(reference_, other.reference_);
        return *this;
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;

    ~Owned() {
        if (reference_ != nullptr) CFRelease(reference_);
    }

    Reference get() const { return reference_; }
    explicit operator bool() const { return reference_ != nullptr; }

    /// Where a function writes the reference that it gives; only while this holds none.
    Reference* out() { return &reference_; }

  private:
    Reference reference_ = nullptr;
};

}  // namespace purlock::host_macos
