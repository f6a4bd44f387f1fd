#include "platform/linux/propertylist/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace purlock::host_linux {

namespace {

class FileDescriptor {
  public:
    explicit FileDescriptor(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
    ~FileDescriptor() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return descriptor_; }

  private:
    const int descriptor_;
};

/// The size of a regular file; absent for anything else.
std::optional<std::size_t> regularFileSize(const FileDescriptor& file) {
    struct stat status = {};
    if (file.get() < 0 || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return static_cast<std::size_t>(status.st_size);
}

}  // namespace

std::optional<std::string> readRegularFile(const std::string& path, std::size_t maximumBytes) {
    if (path.find('\0') != std::string::npos) return std::nullopt;
    const FileDescriptor file(path);
    const auto size = regularFileSize(file);
    if (!size || *size > maximumBytes) return std::nullopt;
    // One byte more than its size: a file that is being written while it is read is not taken.
    std::string content(*size + 1, '\0');
    std::size_t length = 0;
    while (length < content.size()) {
        const ssize_t count = read(file.get(), content.data() + length, content.size() - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
    }
    if (length > *size) return std::nullopt;
    content.resize(length);
    return content;
}

}  // namespace purlock::host_linux
