#pragma once

#include <fcntl.h>
#include <linux/fuse.h>
#include <sys/mount.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

namespace purlock::test {

/// A folder whose file system never answers: a FUSE mount that nobody serves. A thread that asks it for
/// anything waits until this is gone, or until it is killed; once `takesRequest` has said yes, nothing ends
/// the first wait but the end of this. Only root may mount; where it cannot be, `isThere` says so.
class HangingMount {
  public:
    explicit HangingMount(const std::filesystem::path& folder)
        : folder_(folder), device_(::open("/dev/fuse", O_RDWR | O_CLOEXEC | O_NONBLOCK)) {
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

    /// True if somebody has asked for something. The request is taken, as a server does that then dies. Ask
    /// again and again; at first the kernel wants to know which protocol it is.
    bool takesRequest() {
        alignas(fuse_in_header) std::array<std::byte, FUSE_MIN_READ_BUFFER> request;
        const ssize_t size = ::read(device_, request.data(), request.size());
        if (size < static_cast<ssize_t>(sizeof(fuse_in_header))) return false;
        fuse_in_header header;
        std::memcpy(&header, request.data(), sizeof header);
        if (header.opcode != FUSE_INIT) return true;
        answerGreeting(header.unique);
        return false;
    }

  private:
    void answerGreeting(std::uint64_t request) {
        struct {
            fuse_out_header header{};
            fuse_init_out protocol{};
        } answer;
        answer.header = {sizeof answer, 0, request};
        answer.protocol.major = FUSE_KERNEL_VERSION;
        answer.protocol.minor = FUSE_KERNEL_MINOR_VERSION;
        answer.protocol.max_write = 4096;
        static_cast<void>(::write(device_, &answer, sizeof answer) == sizeof answer);
    }

    const std::filesystem::path folder_;
    const int device_;
    bool isThere_ = false;
};

}  // namespace purlock::test
