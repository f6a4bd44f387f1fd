#pragma once

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace purlock::test {

/// A folder whose file system never answers: a FUSE mount that nobody serves. Whoever asks it for anything
/// waits until this is gone. Only root may mount; where it cannot be, `isThere` says so.
class HangingMount {
  public:
    explicit HangingMount(const std::filesystem::path& folder)
        : folder_(folder), device_(::open("/dev/fuse", O_RDWR | O_CLOEXEC)) {
        std::filesystem::create_directories(folder);
        if (device_ < 0) return;
        const std::string options =
            "fd=" + std::to_string(device_) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
        isThere_ = ::mount("hanging", folder.c_str(), "fuse", MS_NOSUID | MS_NODEV, options.c_str()) == 0;
    }
    ~HangingMount() {
        if (device_ >= 0) ::close(device_);  // ends every wait
        if (isThere_) ::umount2(folder_.c_str(), MNT_DETACH);
    }
    HangingMount(const HangingMount&) = delete;
    HangingMount& operator=(const HangingMount&) = delete;

    bool isThere() const { return isThere_; }

  private:
    const std::filesystem::path folder_;
    const int device_;
    bool isThere_ = false;
};

}  // namespace purlock::test
