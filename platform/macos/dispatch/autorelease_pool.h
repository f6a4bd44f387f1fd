#pragma once

// What `@autoreleasepool` compiles to. Clang's documentation of ARC has both; no header of the system does.
extern "C" {
void* objc_autoreleasePoolPush();
void objc_autoreleasePoolPop(void* pool);
}

namespace purlock::host_macos {

/// An autorelease pool for plain C++: what the frameworks autorelease while it lives goes when it ends.
/// AppKit empties the main thread's pool once for each event, and an idle program gets none for hours, so
/// each piece of work has a pool of its own. Made and ended in one function, on one thread.
class AutoreleasePool {
  public:
    AutoreleasePool() : pool_(objc_autoreleasePoolPush()) {}
    ~AutoreleasePool() { objc_autoreleasePoolPop(pool_); }
    AutoreleasePool(const AutoreleasePool&) = delete;
    AutoreleasePool& operator=(const AutoreleasePool&) = delete;

  private:
    void* const pool_;
};

}  // namespace purlock::host_macos
