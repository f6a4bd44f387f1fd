#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/identity.h"

namespace purlock {

/// Work that runs asynchronously, one piece at a time, in the order in which it was handed in.
///
/// Made by the host (`SerialQueueFactory`); any thread may call `async`. Work that was handed in is run even
/// when the last owner drops the queue, so closures hold what they need weakly and do nothing when it is
/// gone.
class SerialQueue {
  public:
    using Task = std::function<void()>;

    SerialQueue() = default;
    virtual ~SerialQueue() = default;
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    virtual void async(Task task) = 0;

    /// `applicationIdentifier` and a suffix, as debuggers and logs show it.
    virtual const std::string& label() const = 0;
};

/// Makes serial queues. One for each process, owned by the host.
class SerialQueueFactory {
  public:
    SerialQueueFactory() = default;
    virtual ~SerialQueueFactory() = default;
    SerialQueueFactory(const SerialQueueFactory&) = delete;
    SerialQueueFactory& operator=(const SerialQueueFactory&) = delete;

    virtual std::shared_ptr<SerialQueue> makeSerialQueue(std::string label) = 0;
};

}  // namespace purlock
