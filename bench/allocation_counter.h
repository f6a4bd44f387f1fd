#pragma once

#include <cstddef>

namespace purlock::bench {

/// How many times this program has allocated memory so far, on any thread. A benchmark that links
/// allocation_counter.cpp has its global operator new counted.
std::size_t allocationCount();

}  // namespace purlock::bench
