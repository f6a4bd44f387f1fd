#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_monitor.h"
#include "tests/support/fake_device_pin.h"
#include "tests/support/fake_machine.h"

namespace purlock::test {

/// A machine with what a monitor needs besides.
struct MonitoredMachine : FakeMachine {
    std::shared_ptr<FakeDevicePin> pin = std::make_shared<FakeDevicePin>();

    std::shared_ptr<AudioMonitor> makeMonitor(HardwareUnderTest& itsWay) {
        return std::make_shared<AudioMonitor>(
            AudioMonitorSeams{itsWay.hardware(), usb, bluetooth, operatingSystem, loop, itsWay.queues()},
            pin);
    }
};

/// A monitor on a fake machine, with its history of published values.
struct MonitorFixture : MonitoredMachine {
    std::shared_ptr<AudioMonitor> monitor;
    std::vector<std::optional<DeviceState>> states;
    std::vector<std::vector<AvailableDevice>> lists;
    std::vector<std::string> events;  // "list" and "state", in the order of their publication
    std::vector<Cancellable> kept;

    MonitorFixture() { make(); }

    void make() {
        monitor = makeMonitor(*way);
        kept.push_back(monitor->state().subscribe([this](const auto& state) {
            states.push_back(state);
            events.emplace_back("state");
        }));
        kept.push_back(monitor->availableDevices().subscribe([this](const auto& list) {
            lists.push_back(list);
            events.emplace_back("list");
        }));
        states.clear();
        lists.clear();
        events.clear();
    }

    void start() {
        monitor->start();
        settle();
    }

    /// The state after one more refresh.
    std::optional<DeviceState> refreshed() {
        monitor->refreshState();
        settle();
        return monitor->state().value();
    }
};

}  // namespace purlock::test
