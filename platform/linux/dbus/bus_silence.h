#pragma once

#include <chrono>
#include <string>

namespace purlock::host_linux {

/// True if there is a bus at `address` that takes connections and does not answer within `longest`, as one
/// whose daemon hangs. A bus that is not there is not silent: a program that connects learns of it at once.
///
/// For libraries that would wait for such a bus without end. Any thread; waits for as long as the bus takes
/// to answer.
bool isSilentBus(const std::string& address, std::chrono::milliseconds longest);

}  // namespace purlock::host_linux
