#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "app/settings_store.h"
#include "core/device_state.h"
#include "tests/support/manual_queues.h"
#include "tests/support/manual_run_loop.h"
#include "tests/support/memory_files.h"
#include "tests/support/memory_user_defaults.h"

namespace purlock::test {

/// What the log and the snapshot need, in memory, at 2026-11-15T23:06:17Z and 250 ms.
struct StateFixture {
    MemoryFiles files;
    ManualQueues queues;
    ManualRunLoop loop;
    ManualClock clock{loop, WallTime(std::chrono::milliseconds(1794783977250))};
    std::shared_ptr<MemoryUserDefaults> defaults = std::make_shared<MemoryUserDefaults>();
    std::shared_ptr<SettingsStore> settings = std::make_shared<SettingsStore>(defaults);
};

inline AudioFormat cd() {
    return {44100, 16, 2, formatFlagIsSignedInteger | formatFlagIsPacked, formatLinearPCM};
}

inline AudioFormat studio() {
    return {48000, 24, 2, formatFlagIsSignedInteger | formatFlagIsPacked, formatLinearPCM};
}

/// A running device "DAC" with the UID "X".
inline DeviceState dac(std::optional<AudioFormat> virtualFormat, std::optional<AudioFormat> physicalFormat) {
    DeviceState state;
    state.deviceID = 50;
    state.name = "DAC";
    state.uid = "X";
    state.virtualFormat = virtualFormat;
    state.physicalFormat = physicalFormat;
    state.isRunning = true;
    state.transportType = DeviceTransport::usb;
    return state;
}

}  // namespace purlock::test
