#pragma once

namespace purlock::host_linux {

/// Gives back memory that the program holds but will not need for a while: what is free in the heap, and the
/// pages of code and constants that are still as in their files. Those stay in the system's cache of files,
/// from where each comes back when it is next needed; that takes microseconds.
///
/// To be called when something large has ended, such as the program's start: until the system runs short of
/// memory, it leaves a program everything that it has ever touched. Takes a few milliseconds; any thread.
void giveBackUnusedMemory();

}  // namespace purlock::host_linux
