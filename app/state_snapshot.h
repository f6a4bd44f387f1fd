#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "app/application_files.h"
#include "base/clock.h"
#include "base/serial_queue.h"
#include "base/shared_instance.h"
#include "core/device_state.h"

namespace purlock {

/// Keeps state.json, one small file that always describes the current output state. It is written whole on
/// every call, absent states included, and does not depend on the log switch.
///
/// One instance for the program (`shared`); main thread only. The file is replaced on a queue of its own, in
/// the order of the calls; a failed write is dropped.
class StateSnapshot {
  public:
    static inline SharedInstance<StateSnapshot> shared;

    /// Makes the snapshot's folder. Stops the process when there is no folder for application data.
    StateSnapshot(ApplicationFiles& files, SerialQueueFactory& queues, const Clock& clock);

    void write(const std::optional<DeviceState>& state);

    /// The snapshot file; it may not exist yet.
    const std::filesystem::path& url() const { return url_; }

  private:
    /// A snapshot around its time. Nothing else changes in most of the writes, so it is built once for them.
    struct Text;

    static std::shared_ptr<const Text> textOf(const std::optional<DeviceState>& state);

    ApplicationFiles& files_;
    const Clock& clock_;
    const std::shared_ptr<SerialQueue> queue_;
    const std::filesystem::path url_;
    std::optional<DeviceState> state_;  // whose text it is
    std::shared_ptr<const Text> text_;
};

}  // namespace purlock
