#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "base/run_loop.h"
#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_thread.h"

namespace purlock::host_linux {

/// How the one instance of a session hears that the program was started once more: it owns the name
/// `org.purlock.Purlock` on the session bus and is an org.freedesktop.Application there.
///
/// Owned by the host; made and dropped on the main thread, after the bus thread and before its end. A bus
/// that is not there, goes or comes back is no trouble.
class InstanceActivation {
  public:
    /// `onActivate` runs on the main thread, once for however many calls have come since it last ran.
    InstanceActivation(RunLoop& mainLoop, BusThread& busThread, std::string busAddress,
                       std::function<void()> onActivate);
    ~InstanceActivation();
    InstanceActivation(const InstanceActivation&) = delete;
    InstanceActivation& operator=(const InstanceActivation&) = delete;

  private:
    class Service;

    /// What the bus thread shares with this. The function is for the main thread alone.
    struct Link {
        std::function<void()> onActivate;
        std::atomic<bool> underWay = false;
    };

    std::shared_ptr<Link> link_;
    std::unique_ptr<OnBusThread<Service>> service_;
};

/// Has the running instance of this session activated: what a second start does. Waits for the answer, at
/// most `longest`, also for an instance that has just begun to start. False when there is no bus, no instance
/// on it, or no answer. Any thread but the bus thread.
bool activateRunningInstance(const std::string& busAddress, std::chrono::milliseconds longest);

}  // namespace purlock::host_linux
