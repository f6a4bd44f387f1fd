#pragma once

namespace purlock::host_linux {

/// Gives back memory that the program holds but will not need for a while: what is free in the heap, and the
/// pages of code and constants that are still as in their files. These pages stay in the system's cache of
/// files. Each comes back within microseconds when it is next needed.
///
/// To be called when something large has ended, such as the program's start: until the system runs short of
/// memory, it leaves a program everything that it has ever touched. Takes a few milliseconds; any thread.
void giveBackUnusedMemory();

/// Has large pieces of memory go back to the system as soon as they are freed, and the end of the heap not
/// grow beyond what is in use. Otherwise the allocator would expect more large messages after the first one,
/// and keep its memory. All threads share one heap, because a heap for each of them would be nearly empty.
/// Once, at the program's start.
void keepFreeMemorySmall();

}  // namespace purlock::host_linux
