#pragma once

#include <pipewire/pipewire.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace purlock::host_linux {

// One owner for each kind of libpipewire handle; what holds a raw pointer elsewhere borrows it. Except where
// noted, everything here belongs to the loop's thread, or to the thread that has stopped the loop.

/// The library's own start and end, counted by the library.
class PipeWireLibrary {
  public:
    PipeWireLibrary() { pw_init(nullptr, nullptr); }
    ~PipeWireLibrary() { pw_deinit(); }
    PipeWireLibrary(const PipeWireLibrary&) = delete;
    PipeWireLibrary& operator=(const PipeWireLibrary&) = delete;
};

/// Deletes a handle with the library's function for it.
template <auto destroy>
struct HandleDeleter {
    template <typename Handle>
    void operator()(Handle* handle) const {
        destroy(handle);
    }
};

/// A loop with a thread of its own.
using ThreadLoop = std::unique_ptr<pw_thread_loop, HandleDeleter<&pw_thread_loop_destroy>>;

/// The client's side of everything: its configuration, loop and modules.
using Context = std::unique_ptr<pw_context, HandleDeleter<&pw_context_destroy>>;

/// One connection to a server; ends it, with all of its proxies.
using Core = std::unique_ptr<pw_core, HandleDeleter<&pw_core_disconnect>>;

/// This side's stand-in for one object of the server.
using Proxy = std::unique_ptr<pw_proxy, HandleDeleter<&pw_proxy_destroy>>;

struct RegistryDeleter {
    void operator()(pw_registry* registry) const { pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry)); }
};

/// This side's stand-in for a server's list of objects.
using Registry = std::unique_ptr<pw_registry, RegistryDeleter>;

/// Null when the connection is broken.
Proxy bind(pw_registry* registry, std::uint32_t id, const char* type, std::uint32_t version);

/// A registration of callbacks. It must neither move nor outlive the object that it is registered with, so
/// owners declare it after that object's handle.
class Listener {
  public:
    Listener() = default;
    ~Listener() {
        if (hook_.link.next != nullptr) spa_hook_remove(&hook_);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    spa_hook* hook() { return &hook_; }

  private:
    spa_hook hook_{};
};

template <auto method>
struct EventMethod;

template <typename Object, typename Result, typename... Arguments, Result (Object::*method)(Arguments...)>
struct EventMethod<method> {
    static Result call(void* data, Arguments... arguments) {
        return (static_cast<Object*>(data)->*method)(arguments...);
    }
};

/// A callback for a table of events. It calls a method of the object that the listener was added with.
template <auto method>
constexpr auto event = &EventMethod<method>::call;

/// A source of callbacks in a loop; the action runs on the loop's thread until the source is destroyed.
class LoopSource {
  public:
    using Action = std::function<void()>;

    LoopSource(const LoopSource&) = delete;
    LoopSource& operator=(const LoopSource&) = delete;

  protected:
    LoopSource(pw_loop* loop, Action action) : loop_(loop), action_(std::move(action)) {}
    ~LoopSource() {
        if (source_ != nullptr) pw_loop_destroy_source(loop_, source_);
    }

    pw_loop* const loop_;
    const Action action_;
    spa_source* source_ = nullptr;
};

/// Fires once, some time after it was armed. Unarmed it costs nothing.
class LoopTimer final : public LoopSource {
  public:
    LoopTimer(pw_loop* loop, Action action);

    /// True if the system gave a descriptor for it; without one it never fires.
    bool isAble() const { return source_ != nullptr; }

    /// Replaces an earlier time.
    void arm(std::chrono::milliseconds delay);
    void disarm();

  private:
    void set(std::chrono::nanoseconds delay);

    bool armed_ = false;
};

/// Runs its action on the loop's thread after a signal; several signals may become one. Any thread may
/// signal.
class LoopEvent final : public LoopSource {
  public:
    LoopEvent(pw_loop* loop, Action action);

    void signal() {
        if (source_ != nullptr) pw_loop_signal_event(loop_, source_);
    }
};

/// Runs its action whenever a descriptor, which stays its owner's, is readable.
class LoopReader final : public LoopSource {
  public:
    LoopReader(pw_loop* loop, int descriptor, Action action);
};

}  // namespace purlock::host_linux
