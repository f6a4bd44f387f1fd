#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace purlock::host_linux {

/// An open file, closed with its object.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor();
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }

    int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }

  private:
    int descriptor_ = -1;
};

/// The first `limit` bytes of a regular file (of the kernel's folders too); absent when it cannot be read. A
/// pipe, a socket or a device under that name is not opened, so this never waits for a writer. Any thread.
std::optional<std::string> readFile(const std::string& path, std::size_t limit);

/// The names in a folder but "." and "..", sorted by their bytes, at most `limit` of them; absent when it
/// cannot be read. Any thread.
std::optional<std::vector<std::string>> namesInFolder(const std::string& path, std::size_t limit);

}  // namespace purlock::host_linux
