#pragma once

#include <chrono>
#include <thread>

namespace purlock::test {

/// Asks again and again, with short pauses, until the answer is yes or the time is over; returns the last
/// answer.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds time = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return condition();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace purlock::test
