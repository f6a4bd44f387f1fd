#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>

namespace purlock::bench {

/// What a process has used so far, all of its threads together, as /proc tells it.
struct ProcessUse {
    double processorMilliseconds = 0;
    long wakeUps = 0;       // voluntary switches
    long bytesWritten = 0;  // handed to files and devices
    int threads = 0;        // that live; what others had used before they ended is not counted
};

/// What it holds now, in KiB.
struct ProcessMemory {
    long resident = 0;
    long anonymous = 0;  // its own: heap, stacks and what it changed
};

/// Absent when the process is gone.
std::optional<ProcessUse> useOf(pid_t pid);
std::optional<ProcessMemory> memoryOf(pid_t pid);

}  // namespace purlock::bench
