#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "platform/linux/pipewire/hardware/answers.h"

namespace purlock::host_linux {

/// The answers as last published, which PipeWire's loop and the readers share. The lock is held for the time
/// of copying or swapping a pointer.
class SharedAnswers {
  public:
    std::shared_ptr<const Answers> get() const {
        const std::lock_guard lock(mutex_);
        return answers_;
    }

    void set(std::shared_ptr<const Answers> answers) {
        const std::lock_guard lock(mutex_);
        answers_.swap(answers);  // the old one ends, if nobody reads it, after the lock
    }

  private:
    mutable std::mutex mutex_;
    std::shared_ptr<const Answers> answers_ = std::make_shared<const Answers>();
};

}  // namespace purlock::host_linux
