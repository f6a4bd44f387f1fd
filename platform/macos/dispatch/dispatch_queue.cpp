#include "platform/macos/dispatch/dispatch_queue.h"

#include <utility>

#include "base/fatal.h"
#include "platform/macos/dispatch/autorelease_pool.h"
#include "platform/macos/dispatch/native_queue.h"

namespace purlock::host_macos {

namespace {

using Task = SerialQueue::Task;

/// A task on its way through the system, which passes one pointer. It comes back exactly once.
void* packed(Task task) {
    return std::make_unique<Task>(std::move(task)).release();
}

void runPacked(void* context) {
    const AutoreleasePool pool;
    const std::unique_ptr<Task> task(static_cast<Task*>(context));
    (*task)();
}

dispatch_queue_t queueOf(const DispatchQueue& queue) {
    return static_cast<dispatch_queue_t>(queue.handle());
}

}  // namespace

DispatchQueue::DispatchQueue(std::string label)
    : label_(std::move(label)), handle_(dispatch_queue_create(label_.c_str(), DISPATCH_QUEUE_SERIAL)) {}

DispatchQueue::~DispatchQueue() {
    dispatch_release(queueOf(*this));
}

void DispatchQueue::async(Task task) {
    dispatch_async_f(queueOf(*this), packed(std::move(task)), runPacked);
}

std::shared_ptr<SerialQueue> DispatchQueues::makeSerialQueue(std::string label) {
    return std::make_shared<DispatchQueue>(std::move(label));
}

dispatch_queue_t nativeQueue(const SerialQueue& queue) {
    const auto* const ours = dynamic_cast<const DispatchQueue*>(&queue);
    if (ours == nullptr) fatalStop("a queue that the system does not know");
    return queueOf(*ours);
}

void dispatchToMain(std::function<void()> task) {
    dispatch_async_f(dispatch_get_main_queue(), packed(std::move(task)), runPacked);
}

void dispatchToMainAfter(std::chrono::milliseconds delay, std::function<void()> task) {
    const auto nanoseconds = std::chrono::nanoseconds(delay).count();
    dispatch_after_f(dispatch_time(DISPATCH_TIME_NOW, nanoseconds), dispatch_get_main_queue(),
                     packed(std::move(task)), runPacked);
}

}  // namespace purlock::host_macos
