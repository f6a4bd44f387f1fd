#pragma once

#include <functional>
#include <optional>
#include <thread>

namespace purlock {

/// Runs `body` on a thread of its own. Absent when the system refuses one, as it does beyond a limit of
/// processes or without memory; `body` never runs then. Any thread.
std::optional<std::thread> startThread(std::function<void()> body);

}  // namespace purlock
