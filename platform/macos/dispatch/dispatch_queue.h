#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "base/serial_queue.h"

namespace purlock::host_macos {

/// A serial dispatch queue of default quality of service. The system keeps a queue until its work is done.
///
/// Names no type of the system: a queue is one type to C++ and another to Objective-C++. `native_queue.h` has
/// it.
class DispatchQueue final : public SerialQueue {
  public:
    explicit DispatchQueue(std::string label);
    ~DispatchQueue() override;

    void async(Task task) override;
    const std::string& label() const override { return label_; }

    /// The system's queue, for `native_queue.h`.
    void* handle() const { return handle_; }

  private:
    const std::string label_;
    void* const handle_;
};

/// Makes dispatch queues. Any thread.
class DispatchQueues final : public SerialQueueFactory {
  public:
    std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) override;
};

/// Runs `task` on the main thread, never before this call has returned. Any thread.
void dispatchToMain(std::function<void()> task);

/// The same, once `delay` has passed.
void dispatchToMainAfter(std::chrono::milliseconds delay, std::function<void()> task);

}  // namespace purlock::host_macos
