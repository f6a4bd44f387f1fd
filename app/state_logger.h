#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "app/application_files.h"
#include "app/settings_store.h"
#include "base/clock.h"
#include "base/serial_queue.h"
#include "base/shared_instance.h"
#include "core/device_state.h"

namespace purlock {

/// Appends a line of JSON to log.jsonl each time the device's state changes in a way that matters: the
/// device, whether it runs, the rate and bit depth of its formats. It obeys the user's log switch.
///
/// One instance for the program (`shared`); main thread only. Files are written on a queue of its own, in the
/// order of the calls; the file is only ever appended to, and a failed write is dropped.
class StateLogger {
  public:
    static inline SharedInstance<StateLogger> shared;

    /// Makes the log's folder. Stops the process when there is no folder for application data.
    StateLogger(ApplicationFiles& files, SerialQueueFactory& queues, const Clock& clock,
                std::shared_ptr<const SettingsStore> settings);

    /// Logs `state` unless the log is off or the last logged state had the same signature. While the log is
    /// off nothing is remembered: what was last logged is still compared with what comes when it is on again.
    void record(const DeviceState& state);

    /// The log file; it may not exist yet.
    const std::filesystem::path& logURL() const { return logURL_; }

    /// The parts of a state that count: "X|true|44100.0/16|48000.0/24", with "-" for an absent format.
    static std::string signature(const DeviceState& state);

  private:
    ApplicationFiles& files_;
    const Clock& clock_;
    const std::shared_ptr<const SettingsStore> settings_;
    const std::shared_ptr<SerialQueue> queue_;
    const std::filesystem::path logURL_;
    std::optional<DeviceState> lastState_;  // has the signature of the last line
};

}  // namespace purlock
