#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/operating_system.h"
#include "base/run_loop.h"
#include "base/running_applications.h"
#include "ui/window_seams.h"

namespace purlock::standins {

/// A value that is neither a text, a number nor a Boolean.
struct OtherValue {
    bool operator==(const OtherValue&) const = default;
};
using StoredValue = std::variant<std::string, bool, std::int64_t, double, OtherValue>;

struct BluetoothEntry {
    bool isConnected = false;
    std::optional<std::string> name;
    std::optional<std::string> nameOrAddress;
    std::optional<std::string> addressString;
    bool isForeign = false;  // an object that is no Bluetooth device at all
};

/// The Mac that the stand-ins of Foundation and AppKit show to the program: what there is, and what the
/// program did. One at a time, made by the test, main thread.
class World {
  public:
    explicit World(RunLoop& mainLoop);
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    static World& current();

    RunLoop& mainLoop;

    // What there is.
    OperatingSystemVersion version{15, 3, 0};
    std::vector<RunningApplication> applications;
    std::optional<std::vector<BluetoothEntry>> paired;  // absent: nil
    std::filesystem::path home = "/nonexistent";
    bool hasApplicationSupport = true;
    bool diskIsFull = false;  // writing raises, after the first half
    std::map<std::string, StoredValue> defaults;
    std::map<std::string, std::map<std::string, StoredValue>> propertyLists;  // by path; others do not parse

    bool hasNoSymbols = false;
    bool itemsHaveButtons = true;
    bool refusesMonitors = false;
    bool isActive = true;       // else panels that hide on deactivation are not to be seen
    bool opensNothing = false;  // no program for any file
    int activities = 0;         // that keep the program awake
    std::optional<Rect> itemFrame =
        Rect{1000, 876, 30, 24};  // where the status item's window is; absent: none

    // What the program did, in order: "setActivationPolicy: 1".
    std::vector<std::string> calls;
    void note(std::string call) { calls.push_back(std::move(call)); }
    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    // Notifications and timers.
    struct Observer {
        std::string name;
        std::function<void()> block;
        const void* token = nullptr;
    };
    std::vector<Observer> observers;
    /// As the framework would, from whatever thread: blocks run on the main queue.
    void postNotification(const std::string& name);

    struct Timer {
        double interval = 0;
        bool repeats = false;
        std::string mode;  // empty until it is added to the run loop
    };
    std::map<const void*, Timer> timers;

  private:
    World* const outer_;
};

}  // namespace purlock::standins
