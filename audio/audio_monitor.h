#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
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
    RunningApplications& applications;
    OperatingSystem& operatingSystem;
    RunLoop& mainLoop;
    SerialQueueFactory& queues;
};

/// Watches the audio hardware layer: which output devices there are, and the state of the one that is judged
/// (the pinned one if it is there, else the system's default).
///
/// Owned by the application, made and started on the main thread, and held by a shared pointer, for the
/// closures that it hands out hold it weakly. A refresh runs on its caller's thread: the main thread, or the
/// monitor's own queue, on which the layer's notifications arrive. A mutex keeps refreshes apart, and results
/// are posted to the main thread before it is released, so that they are published in the order in which the
/// refreshes ran. Nothing here fails: what cannot be read becomes a default.
class AudioMonitor : public std::enable_shared_from_this<AudioMonitor> {
  public:
    AudioMonitor(const AudioMonitorSeams& seams, std::shared_ptr<DevicePin> settings);

    /// Removes every listener.
    ~AudioMonitor();

    AudioMonitor(const AudioMonitor&) = delete;
    AudioMonitor& operator=(const AudioMonitor&) = delete;

    /// Reads the device list, installs the system's listeners, reads the first state and follows the pin.
    /// Once, on the main thread.
    void start();

    /// Reads the device list and publishes it, equal or not; a list that cannot be read changes nothing. Any
    /// thread.
    void refreshDevices();

    /// Reads everything about the chosen device in one pass over one picture of the layer and publishes it,
    /// equal or not. Any thread.
    void refreshState();

    /// The first device of the list last read whose UID is exactly `uid`. Any thread.
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

    // All of these with refreshing_ held.
    std::optional<AudioObjectID> listedDevice(std::string_view uid) const;
    AudioObjectID chosenDevice(AudioProperties& hardware) const;
    Observation observe(AudioProperties& hardware, AudioObjectID device) const;
    void followDevice(AudioObjectID device, std::optional<AudioObjectID> stream);
    void installListener(AudioObjectID objectID, std::uint32_t selector, std::uint32_t scope,
                         Listeners& store, Action action);
    void installSystemListeners();
    void installDeviceListeners(AudioObjectID deviceID, std::optional<AudioObjectID> streamID);
    void uninstall(Listeners& listeners);

    void publishState(std::optional<DeviceState> state);
    void refreshDevicesAndState();
    void followPin();

    Published<std::optional<DeviceState>> state_;
    Published<std::vector<AvailableDevice>> availableDevices_;
    const AudioMonitorSeams seams_;
    const std::shared_ptr<SerialQueue> queue_;
    const std::shared_ptr<DevicePin> settings_;
    Cancellable pinSubscription_;

    mutable std::mutex refreshing_;
    std::vector<AvailableDevice> devices_;  // the list last read
    std::optional<std::string> pinnedUID_;  // the setting, which may be read on the main thread only
    Listeners systemListeners_;
    Listeners deviceListeners_;
    AudioObjectID currentDeviceID_ = 0;
    std::optional<AudioObjectID> currentStreamID_;
};

}  // namespace purlock
