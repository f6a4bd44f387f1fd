#pragma once

#include "platform/linux/accessibility/kept_trees.h"

namespace purlock::test {

/// Trees are read many times a second, so that a test need not wait.
inline constexpr host_linux::ReadingPace fastPace{
    .follow = {std::chrono::milliseconds(50), std::chrono::milliseconds(50)},
    .steady = std::chrono::milliseconds(200),
    .settling = std::chrono::milliseconds(50),
    .absent = std::chrono::milliseconds(200),
    .longest = std::chrono::milliseconds(200),
    .retry = std::chrono::milliseconds(50),
    .windows = std::chrono::milliseconds(50),
    .forgotten = std::chrono::seconds(90)};

}  // namespace purlock::test
