#include "platform/linux/storage/instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace purlock::host_linux {

InstanceLock::InstanceLock(const std::filesystem::path& file)
    : file_(::open(file.c_str(), O_CREAT | O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600)) {
    if (!file_) return;
    if (::flock(file_.get(), LOCK_EX | LOCK_NB) == 0) {
        outcome_ = Outcome::taken;
    } else if (errno == EWOULDBLOCK) {
        outcome_ = Outcome::heldByAnother;
    }
}

void InstanceLock::release() {
    if (outcome_ == Outcome::taken) ::flock(file_.get(), LOCK_UN);
    outcome_ = Outcome::unavailable;
}

}  // namespace purlock::host_linux
