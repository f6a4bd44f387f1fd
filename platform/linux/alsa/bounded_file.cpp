#include "platform/linux/alsa/bounded_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace purlock::host_linux {

namespace {

class FileDescriptor {
  public:
    explicit FileDescriptor(int value) : value_(value) {}
    ~FileDescriptor() {
        if (value_ >= 0) ::close(value_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int value() const { return value_; }

  private:
    const int value_;
};

bool isRegularFile(int descriptor) {
    struct stat information {};
    return ::fstat(descriptor, &information) == 0 && S_ISREG(information.st_mode);
}

}  // namespace

std::optional<std::string> readBoundedFile(const std::string& path, std::size_t limit) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.value() < 0 || !isRegularFile(file.value())) return std::nullopt;
    std::string text;
    char block[4096];
    while (text.size() < limit) {
        const ssize_t count = ::read(file.value(), block, std::min(sizeof block, limit - text.size()));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) break;
        text.append(block, static_cast<std::size_t>(count));
    }
    return text;
}

}  // namespace purlock::host_linux
