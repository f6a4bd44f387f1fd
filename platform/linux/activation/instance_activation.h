#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/run_loop.h"
#include "platform/linux/dbus/bus_connection.h"
#include "platform/linux/dbus/bus_thread.h"

namespace purlock::host_linux {

/// How the one instance of a session hears that the program was started once more: it owns the name
/// `org.purlock.Purlock` on the session bus and is an org.freedesktop.Application there. It also tells
/// whether its panel is open.
///
/// Owned by the host; made and dropped on the main thread, after the bus thread and before its end. A bus
/// that is not there, goes or comes back is no trouble.
class InstanceActivation {
  public:
    /// `onActivate` runs on the main thread, once for however many calls have come since it last ran.
    /// `isPanelOpen` is asked there too.
    InstanceActivation(RunLoop& mainLoop, BusThread& busThread, std::string busAddress,
                       std::function<void()> onActivate, std::function<bool()> isPanelOpen);
    ~InstanceActivation();
    InstanceActivation(const InstanceActivation&) = delete;
    InstanceActivation& operator=(const InstanceActivation&) = delete;

  private:
    class Service;

    /// Shared with the bus thread. The functions are for the main thread alone.
    struct Shared {
        std::function<void()> onActivate;
        std::function<bool()> isPanelOpen;
        std::function<void(bool)> answer;
        std::atomic<bool> underWay = false;
        std::atomic<bool> questionUnderWay = false;
    };

    std::shared_ptr<Shared> shared_;
    std::unique_ptr<OnBusThread<Service>> service_;
};

/// Has the running instance of this session activated: what a second start does. Waits for the answer, at
/// most `longest`, also for an instance that has just begun to start. False when there is no bus, no instance
/// on it, or no answer. Any thread but the bus thread.
bool activateRunningInstance(const std::string& busAddress, std::chrono::milliseconds longest);

/// True if the panel of the running instance is open, once that instance has done what it was asked before.
/// Absent when it does not say within `longest`. Any thread but the bus thread.
std::optional<bool> panelOfRunningInstance(const std::string& busAddress, std::chrono::milliseconds longest);

}  // namespace purlock::host_linux
