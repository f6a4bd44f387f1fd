#pragma once

namespace purlock::host_linux {

/// Gives back memory that the program holds but will not need for a while: what is free in the heap, and the
/// pages of code and constants that are still as in their files. Those stay in the system's cache of files,
/// from where each comes back when it is next needed; that takes microseconds.
///
/// To be called when something large has ended, such as the program's start: until the system runs short of
/// memory, it leaves a program everything that it has ever touched. Takes a few milliseconds; any thread.
void giveBackUnusedMemory();

/// Has large pieces of memory go back to the system as soon as they are freed, and the end of the heap not
/// grow beyond what is in use. The allocator would else learn from the first large message that more is to
/// come, and keep what it took. Once, at the program's start.
void keepFreeMemorySmall();

}  // namespace purlock::host_linux
