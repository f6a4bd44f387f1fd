#pragma once

#include <memory>
#include <utility>

namespace purlock {

/// Something that goes on for as long as its owner keeps this handle: a subscription, a timer, a
/// registration.
///
/// Dropping the handle ends it; a delivery that has not begun by then does not happen. A handle may be
/// dropped on any thread, and from within the very callback that it keeps alive.
class [[nodiscard]] Cancellable {
  public:
    Cancellable() = default;

    /// `token` is whatever must live on; its destructor ends the thing.
    explicit Cancellable(std::shared_ptr<void> token) : token_(std::move(token)) {}

    Cancellable(Cancellable&&) = default;
    Cancellable& operator=(Cancellable&&) = default;
    Cancellable(const Cancellable&) = delete;
    Cancellable& operator=(const Cancellable&) = delete;
    ~Cancellable() = default;

    void cancel() { token_.reset(); }

    /// True if this handle keeps something; a one-shot timer that has fired counts until it is dropped.
    explicit operator bool() const { return token_ != nullptr; }

  private:
    std::shared_ptr<void> token_;
};

}  // namespace purlock
