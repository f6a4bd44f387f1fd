#pragma once

#include <ctime>

#include <chrono>

namespace purlock::test {

/// The processor time that this thread has used so far. Other programs that keep the machine busy hardly
/// change what passes of it.
inline std::chrono::nanoseconds threadProcessorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace purlock::test
