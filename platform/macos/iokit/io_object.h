#pragma once

#include <IOKit/IOKitLib.h>

#include <utility>

namespace purlock::host_macos {

/// One reference to an object of the I/O registry (a service, an iterator), released at the end.
class IOObject {
  public:
    /// Takes over a reference; 0 is none.
    explicit IOObject(io_object_t object) : object_(object) {}
    IOObject(IOObject&& other) noexcept : object_(std::exchange(other.object_, 0)) {}
    IOObject(const IOObject&) = delete;
    IOObject& operator=(const IOObject&) = delete;

    ~IOObject() {
        if (object_ != 0) IOObjectRelease(object_);
    }

    io_object_t get() const { return object_; }
    explicit operator bool() const { return object_ != 0; }

  private:
    io_object_t object_;
};

}  // namespace purlock::host_macos
