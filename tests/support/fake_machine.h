#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/fake_attached_devices.h"
#include "tests/support/fake_audio_hardware.h"
#include "tests/support/fake_operating_system.h"
#include "tests/support/fake_running_applications.h"
#include "tests/support/hardware_under_test.h"
#include "tests/support/manual_queues.h"
#include "tests/support/manual_run_loop.h"

namespace purlock::test {

inline constexpr std::uint32_t globalScope = kAudioObjectPropertyScopeGlobal;
inline constexpr std::uint32_t outputScope = kAudioObjectPropertyScopeOutput;

/// A fake machine, on whichever way to it the tests are linked with. Two devices stand ready: "Desk" (id 50,
/// stream 51) and "Cans" (id 60, stream 61); Desk is the default.
struct FakeMachine {
    FakeAudioHardware hardware;
    FakeUsbRegistry usb;
    FakeBluetoothStack bluetooth;
    FakeRunningApplications applications;
    FakeOperatingSystem operatingSystem;
    ManualRunLoop loop;
    ManualQueues queues;
    std::unique_ptr<HardwareUnderTest> way = HardwareUnderTest::make(hardware, queues);

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

    FakeMachine() {
        desk.addTo(hardware);
        cans.addTo(hardware);
        setDevices({50, 60});
        setDefault(50);
        hardware.setObjects(kAudioObjectSystemObject, kAudioHardwarePropertyProcessObjectList, globalScope,
                            {});
    }

    /// The system runs what was handed in, also at the end.
    ~FakeMachine() { queues.run(); }

    FakeMachine(const FakeMachine&) = delete;
    FakeMachine& operator=(const FakeMachine&) = delete;

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
