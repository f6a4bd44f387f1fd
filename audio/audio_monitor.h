#pragma once

#include <atomic>
#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "audio/audio_hardware.h"
#include "audio/bluetooth_stack.h"
#include "audio/device_pin.h"
#include "audio/process_audio.h"
#include "audio/usb_registry.h"
#include "base/published.h"
#include "base/run_loop.h"
#include "base/serial_queue.h"
#include "core/device_state.h"

namespace purlock {

/// An output device that the user may pin.
struct AvailableDevice {
    AudioObjectID id = 0;
    std::string name;  // "Unknown" when it cannot be read
    std::string uid;   // empty when it cannot be read; such a device cannot be pinned

    bool operator==(const AvailableDevice&) const = default;
};

/// What the audio monitor asks of the host. All of it outlives the monitor.
struct AudioMonitorSeams {
    AudioHardware& hardware;
    UsbRegistry& usb;
    BluetoothStack& bluetooth;
    OperatingSystem& operatingSystem;
    RunLoop& mainLoop;
    SerialQueueFactory& queues;
};

/// Watches the audio hardware layer: which output devices there are, and the state of the one that is judged
/// (the pinned one if it is there, else the system's default).
///
/// Owned by the application, made and started on the main thread, and held by a shared pointer, for the
/// closures that it hands out hold it weakly. Every refresh runs on the monitor's own queue, on which the
/// layer's notifications arrive too: the layer and the services of the devices may take seconds to answer,
/// and nobody else waits for them. Results are posted to the main thread, so that they are published in the
/// order in which the refreshes ran. Nothing here fails: what cannot be read becomes a default.
class AudioMonitor : public std::enable_shared_from_this<AudioMonitor> {
  public:
    AudioMonitor(const AudioMonitorSeams& seams, std::shared_ptr<DevicePin> settings);

    /// Removes every listener.
    ~AudioMonitor();

    AudioMonitor(const AudioMonitor&) = delete;
    AudioMonitor& operator=(const AudioMonitor&) = delete;

    /// Has the device list read, the system's listeners installed and the first state read, and follows the
    /// pin. Once, on the main thread.
    void start();

    /// Has the device list read and published, equal or not; a list that cannot be read changes nothing. Any
    /// thread.
    void refreshDevices();

    /// Has everything about the chosen device read in one pass over one picture of the layer, and published,
    /// equal or not. One refresh that waits for its turn is enough: while one does, no other is added. Any
    /// thread.
    void refreshState();

    /// The first of the available devices whose UID is exactly `uid`. Main thread.
    std::optional<AudioObjectID> findDeviceByUID(std::string_view uid) const;

    /// The state of the judged device; absent when there is none. Main thread.
    const Published<std::optional<DeviceState>>& state() const { return state_; }

    /// The devices that have output streams, in the layer's order. Main thread.
    const Published<std::vector<AvailableDevice>>& availableDevices() const { return availableDevices_; }

  private:
    struct ListenerKey {
        AudioObjectID objectID = 0;
        std::uint32_t selector = 0;
        std::uint32_t scope = 0;

        auto operator<=>(const ListenerKey&) const = default;
    };
    struct InstalledListener {
        PropertyAddress address;
        ListenerBlock block;
    };
    struct Observation {
        DeviceState state;
        std::optional<AudioObjectID> stream;  // the one whose formats the state holds
    };
    using Listeners = std::map<ListenerKey, InstalledListener>;
    using Action = void (AudioMonitor::*)();

    void followPin();
    void perform(Action action);

    // All of these on the queue.
    void readAtStart();
    void readDevices();
    void readState();
    void readStateThatIsDue();
    void readDevicesAndState();
    AudioObjectID chosenDevice(AudioProperties& hardware) const;
    Observation observe(AudioProperties& hardware, AudioObjectID device) const;
    void followDevice(AudioObjectID device, std::optional<AudioObjectID> stream);
    void installListener(AudioObjectID objectID, std::uint32_t selector, std::uint32_t scope,
                         Listeners& store, Action action);
    void installSystemListeners();
    void installDeviceListeners(AudioObjectID deviceID, std::optional<AudioObjectID> streamID);
    void uninstall(Listeners& listeners);
    void publishState(std::optional<DeviceState> state);

    Published<std::optional<DeviceState>> state_;
    Published<std::vector<AvailableDevice>> availableDevices_;
    const AudioMonitorSeams seams_;
    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<DevicePin> settings_;
    Cancellable pinSubscription_;

    std::atomic<bool> refreshIsDue_ = false;

    // The queue's own.
    std::vector<AvailableDevice> devices_;  // the list last read
    std::optional<std::string> pinnedUID_;  // the setting, which may be read on the main thread only
    Listeners systemListeners_;
    Listeners deviceListeners_;
    AudioObjectID currentDeviceID_ = 0;
    std::optional<AudioObjectID> currentStreamID_;
};

}  // namespace purlock
