#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/settings_store.h"
#include "audio/audio_monitor.h"
#include "tests/support/fake_attached_devices.h"
#include "tests/support/fake_audio_hardware.h"
#include "tests/support/fake_operating_system.h"
#include "tests/support/fake_running_applications.h"
#include "tests/support/hardware_under_test.h"
#include "tests/support/manual_queues.h"
#include "tests/support/manual_run_loop.h"
#include "tests/support/memory_user_defaults.h"

namespace purlock::test {

inline constexpr std::uint32_t globalScope = kAudioObjectPropertyScopeGlobal;
inline constexpr std::uint32_t outputScope = kAudioObjectPropertyScopeOutput;

/// A monitor on a fake machine, on whichever way to it the tests are linked with, and with its history of
/// published values. Two devices stand ready: "Desk" (id 50, stream 51) and "Cans" (id 60, stream 61); Desk
/// is the default.
struct MonitorFixture {
    FakeAudioHardware hardware;
    FakeUsbRegistry usb;
    FakeBluetoothStack bluetooth;
    FakeRunningApplications applications;
    FakeOperatingSystem operatingSystem;
    ManualRunLoop loop;
    ManualQueues queues;
    std::unique_ptr<HardwareUnderTest> way = HardwareUnderTest::make(hardware, queues);
    std::shared_ptr<MemoryUserDefaults> defaults = std::make_shared<MemoryUserDefaults>();
    std::shared_ptr<SettingsStore> settings = std::make_shared<SettingsStore>(defaults);
    std::shared_ptr<AudioMonitor> monitor;
    std::vector<std::optional<DeviceState>> states;
    std::vector<std::vector<AvailableDevice>> lists;
    std::vector<std::string> events;  // "list" and "state", in the order of their publication
    std::vector<Cancellable> kept;

    const FakeDevice desk{50,
                          "Desk",
                          "desk-1",
                          51,
                          floatStream(48000),
                          integerStream(48000, 24),
                          false,
                          kAudioDeviceTransportTypeHDMI};
    const FakeDevice cans{60,
                          "Cans",
                          "cans-1",
                          61,
                          floatStream(44100),
                          integerStream(44100, 16),
                          false,
                          kAudioDeviceTransportTypeBluetooth};

    MonitorFixture() {
        desk.addTo(hardware);
        cans.addTo(hardware);
        setDevices({50, 60});
        setDefault(50);
        hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, globalScope,
                            {});
        make();
    }

    /// The system runs what was handed in, also at the end.
    ~MonitorFixture() { queues.run(); }

    MonitorFixture(const MonitorFixture&) = delete;
    MonitorFixture& operator=(const MonitorFixture&) = delete;

    std::shared_ptr<AudioMonitor> makeMonitor(HardwareUnderTest& itsWay) {
        return std::make_shared<AudioMonitor>(
            AudioMonitorSeams{itsWay.hardware(), usb, bluetooth, operatingSystem, loop, itsWay.queues()},
            settings);
    }

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

    void setDevices(const std::vector<AudioObjectID>& ids) {
        hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyDevices, globalScope, ids);
    }

    void setDefault(AudioObjectID device) {
        hardware.setValue(kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice, device);
    }

    /// Runs everything that is queued or posted.
    void settle() {
        do {
            queues.run();
        } while (loop.runPosted() > 0);
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

    void notify(AudioObjectID object, std::uint32_t selector, std::uint32_t scope = globalScope) {
        hardware.notify(object, selector, scope);
        settle();
    }

    /// The objects and properties that are listened to, each as "51 sfmt glob".
    std::vector<std::string> listened() const {
        std::vector<std::string> lines;
        for (const auto& listener : hardware.listeners()) {
            lines.push_back(std::to_string(listener.object) + " " + code(listener.address.selector) + " " +
                            code(listener.address.scope));
        }
        return lines;
    }

    static std::string code(std::uint32_t value) {
        std::string text;
        for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 0xFF);
        return text;
    }
};

}  // namespace purlock::test
