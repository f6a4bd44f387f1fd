#pragma once

#if defined(__OBJC__)
#error "A queue is another type in Objective-C++: this header is for C++ files."
#endif

#include <dispatch/dispatch.h>

#include "base/serial_queue.h"

namespace purlock::host_macos {

/// The dispatch queue behind a queue of this host's making; stops the process for any other. Borrowed: it
/// lives as long as `queue`.
dispatch_queue_t nativeQueue(const SerialQueue& queue);

}  // namespace purlock::host_macos
