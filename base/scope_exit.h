#pragma once

#include <utility>

namespace purlock {

/// Runs an action at the end of its scope, however the scope is left. The action must not throw.
template <typename Action>
class ScopeExit {
  public:
    explicit ScopeExit(Action action) : action_(std::move(action)) {}
    ~ScopeExit() { action_(); }
    ScopeExit(const ScopeExit&) = delete;
    ScopeExit& operator=(const ScopeExit&) = delete;

  private:
    Action action_;
};

}  // namespace purlock
