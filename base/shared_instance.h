#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "base/fatal.h"

namespace purlock {

/// Holds the single instance of a long-lived service, made on first use.
///
/// The program's start-up says how to make it, with what the host provides; main thread only.
template <typename Service>
class SharedInstance {
  public:
    using Maker = std::function<std::shared_ptr<Service>()>;

    void provide(Maker maker) {
        maker_ = std::move(maker);
        instance_.reset();
    }

    const std::shared_ptr<Service>& operator()() {
        if (!instance_) {
            if (!maker_) fatalStop("a shared service was asked for before start-up");
            instance_ = maker_();
        }
        return instance_;
    }

  private:
    Maker maker_;
    std::shared_ptr<Service> instance_;
};

}  // namespace purlock
