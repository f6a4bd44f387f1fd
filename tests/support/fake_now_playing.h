#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/run_loop.h"
#include "source/now_playing_framework.h"

namespace purlock::test {

/// A notification centre that delivers on a run loop, like the system's own. Notifications may be posted on
/// any thread.
class FakeNotificationCenter final : public NotificationCenter {
  public:
    explicit FakeNotificationCenter(RunLoop& loop) : loop_(loop) {}

    Cancellable addObserverForName(std::string_view name, std::function<void()> block) override {
        auto observer = std::make_shared<Observer>(Observer{std::string(name), std::move(block)});
        const std::lock_guard lock(mutex_);
        observers_.push_back(observer);
        return Cancellable(std::move(observer));
    }

    void post(std::string_view name) {
        const std::lock_guard lock(mutex_);
        for (const std::weak_ptr<Observer>& weak : observers_) {
            const auto observer = weak.lock();
            if (!observer || observer->name != name) continue;
            loop_.post([weak] {
                if (const auto alive = weak.lock()) alive->block();
            });
        }
    }

    /// The names observed now, in the order of registration.
    std::vector<std::string> observedNames() const {
        const std::lock_guard lock(mutex_);
        std::vector<std::string> names;
        for (const std::weak_ptr<Observer>& weak : observers_) {
            if (const auto observer = weak.lock()) names.push_back(observer->name);
        }
        return names;
    }

  private:
    struct Observer {
        std::string name;
        std::function<void()> block;
    };

    RunLoop& loop_;
    mutable std::mutex mutex_;
    std::vector<std::weak_ptr<Observer>> observers_;
};

/// A framework whose answers a test sets. Functions that it takes away are missing at the next lookup.
class FakeNowPlayingFramework final : public NowPlayingFramework,
                                      public std::enable_shared_from_this<FakeNowPlayingFramework> {
  public:
    void remove(const std::string& functionName) { missing_.push_back(functionName); }

    void setAnswer(NowPlayingDictionary dictionary, std::int32_t pid) {
        const std::lock_guard lock(mutex_);
        dictionary_ = std::move(dictionary);
        pid_ = pid;
    }

    GetInfoFunction getInfoFunctionForName(std::string_view name) override {
        if (!has(name, "MRMediaRemoteGetNowPlayingInfo")) return {};
        return [self = shared_from_this()](const Queue& queue, InfoBlock block) {
            self->note("getInfo on " + queue->label());
            queue->async([self, block = std::move(block)] { block(self->dictionary()); });
        };
    }

    RegisterFunction registerFunctionForName(std::string_view name) override {
        if (!has(name, "MRMediaRemoteRegisterForNowPlayingNotifications")) return {};
        return
            [self = shared_from_this()](const Queue& queue) { self->note("register on " + queue->label()); };
    }

    GetPIDFunction getPIDFunctionForName(std::string_view name) override {
        if (!has(name, "MRMediaRemoteGetNowPlayingApplicationPID")) return {};
        return [self = shared_from_this()](const Queue& queue, PIDBlock block) {
            self->note("getPID on " + queue->label());
            queue->async([self, block = std::move(block)] { block(self->pid()); });
        };
    }

    /// "getInfo on <queue's label>" and so on, in the order of the calls.
    std::vector<std::string> calls() const {
        const std::lock_guard lock(mutex_);
        return calls_;
    }

    /// The names looked up, in order.
    const std::vector<std::string>& lookups() const { return lookups_; }

  private:
    bool has(std::string_view asked, std::string_view offered) {
        lookups_.emplace_back(asked);
        return asked == offered && std::ranges::find(missing_, asked) == missing_.end();
    }

    void note(std::string call) {
        const std::lock_guard lock(mutex_);
        calls_.push_back(std::move(call));
    }

    NowPlayingDictionary dictionary() const {
        const std::lock_guard lock(mutex_);
        return dictionary_;
    }

    std::int32_t pid() const {
        const std::lock_guard lock(mutex_);
        return pid_;
    }

    mutable std::mutex mutex_;
    std::vector<std::string> missing_;
    std::vector<std::string> lookups_;
    std::vector<std::string> calls_;
    NowPlayingDictionary dictionary_;
    std::int32_t pid_ = 0;
};

/// Opens the one framework that a test provides, or none.
class FakeFrameworkLoader final : public FrameworkLoader {
  public:
    void provide(std::shared_ptr<NowPlayingFramework> framework) { framework_ = std::move(framework); }

    std::shared_ptr<NowPlayingFramework> openNowPlayingFramework(std::string_view path) override {
        openedPaths_.emplace_back(path);
        return framework_;
    }

    const std::vector<std::string>& openedPaths() const { return openedPaths_; }

  private:
    std::shared_ptr<NowPlayingFramework> framework_;
    std::vector<std::string> openedPaths_;
};

}  // namespace purlock::test
