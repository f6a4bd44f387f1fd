#include "audio/audio_monitor.h"

#include <algorithm>
#include <utility>

#include "audio/bluetooth_devices.h"
#include "audio/property_reader.h"
#include "audio/transport_type.h"
#include "audio/usb_descriptors.h"

namespace purlock {

namespace {

std::string nameOf(AudioProperties& hardware, AudioObjectID device) {
    return readText(hardware, device, kAudioObjectPropertyName).value_or("Unknown");
}

std::string uidOf(AudioProperties& hardware, AudioObjectID device) {
    return readText(hardware, device, kAudioDevicePropertyDeviceUID).value_or("");
}

/// Having output streams is the only test of being an output device, whatever else it is.
bool hasOutputStreams(AudioProperties& hardware, AudioObjectID device) {
    return readSize(hardware, device, kAudioDevicePropertyStreams, kAudioObjectPropertyScopeOutput)
               .value_or(0) != 0;
}

/// The first device of the list whose UID is exactly `uid`.
std::optional<AudioObjectID> deviceIn(const std::vector<AvailableDevice>& devices, std::string_view uid) {
    const auto found = std::ranges::find(devices, uid, &AvailableDevice::uid);
    return found != devices.end() ? std::optional(found->id) : std::nullopt;
}

}  // namespace

AudioMonitor::AudioMonitor(const AudioMonitorSeams& seams, std::shared_ptr<DevicePin> settings)
    : seams_(seams),
      queue_(seams.queues.makeSerialQueue(std::string(applicationIdentifier) + ".purlock.audiomonitor")),
      settings_(std::move(settings)),
      pinnedUID_(settings_->pinnedDeviceUID().value()) {}

AudioMonitor::~AudioMonitor() {
    uninstall(systemListeners_);
    uninstall(deviceListeners_);
}

void AudioMonitor::start() {
    followPin();
    perform(&AudioMonitor::readAtStart);
    settings_->setOnPinnedDeviceChange([weak = weak_from_this()](const auto&) {
        // Never left to a refresh that waits already: that one may come before the new pin.
        if (const auto self = weak.lock()) self->perform(&AudioMonitor::readState);
    });
}

/// Keeps a copy of the pin on the queue. Subscribers hear of a change before the callback that asks for a
/// refresh, so the copy is never behind.
void AudioMonitor::followPin() {
    pinSubscription_ = settings_->pinnedDeviceUID().subscribe([weak = weak_from_this()](const auto& uid) {
        const auto self = weak.lock();
        if (!self) return;
        self->queue_->async([weak, uid] {
            if (const auto later = weak.lock()) later->pinnedUID_ = uid;
        });
    });
}

void AudioMonitor::perform(Action action) {
    queue_->async([weak = weak_from_this(), action] {
        if (const auto self = weak.lock()) (self.get()->*action)();
    });
}

void AudioMonitor::refreshDevices() {
    perform(&AudioMonitor::readDevices);
}

void AudioMonitor::refreshState() {
    if (!refreshIsDue_.exchange(true)) perform(&AudioMonitor::readStateThatIsDue);
}

std::optional<AudioObjectID> AudioMonitor::findDeviceByUID(std::string_view uid) const {
    return deviceIn(availableDevices_.value(), uid);
}

// On the queue.

void AudioMonitor::readAtStart() {
    readDevices();
    installSystemListeners();
    readState();
}

void AudioMonitor::readDevices() {
    const auto picture = seams_.hardware.picture();
    AudioProperties& hardware = *picture;
    const auto objects = readObjects(hardware, kAudioObjectSystemObject, kAudioHardwarePropertyDevices,
                                     kAudioObjectPropertyScopeGlobal);
    if (!objects) return;
    devices_.clear();
    for (const AudioObjectID object : *objects) {
        if (!hasOutputStreams(hardware, object)) continue;
        devices_.push_back({object, nameOf(hardware, object), uidOf(hardware, object)});
    }
    seams_.mainLoop.post([weak = weak_from_this(), devices = devices_] {
        if (const auto self = weak.lock()) self->availableDevices_.set(devices);
    });
}

void AudioMonitor::readStateThatIsDue() {
    refreshIsDue_ = false;  // a later request may come of a change that this read misses
    readState();
}

void AudioMonitor::readState() {
    const auto picture = seams_.hardware.picture();
    const AudioObjectID device = chosenDevice(*picture);
    if (device == 0) {
        // The last device's listeners stay: it may come back under the same id.
        publishState(std::nullopt);
        return;
    }
    Observation observation = observe(*picture, device);
    followDevice(device, observation.stream);
    publishState(std::move(observation.state));
}

void AudioMonitor::readDevicesAndState() {
    readDevices();
    readState();
}

/// The pinned device if it is there, else the system's default, else 0. A pinned device that is absent falls
/// back in silence; the panel tells the user.
AudioObjectID AudioMonitor::chosenDevice(AudioProperties& hardware) const {
    if (pinnedUID_ && !pinnedUID_->empty()) {
        if (const auto pinned = deviceIn(devices_, *pinnedUID_)) return *pinned;
    }
    AudioObjectID device = 0;
    readValue(hardware, kAudioObjectSystemObject, kAudioHardwarePropertyDefaultOutputDevice, device);
    return device;
}

AudioMonitor::Observation AudioMonitor::observe(AudioProperties& hardware, AudioObjectID device) const {
    Observation observed;
    DeviceState& state = observed.state;
    state.deviceID = device;
    state.name = nameOf(hardware, device);
    state.uid = uidOf(hardware, device);
    state.isRunning = readFlag(hardware, device, kAudioDevicePropertyDeviceIsRunningSomewhere);
    if (const auto streams = outputStreams(hardware, device); !streams.empty()) {
        observed.stream = streams.front();  // also on devices with several
        state.virtualFormat = streamFormat(hardware, *observed.stream, kAudioStreamPropertyVirtualFormat);
        state.physicalFormat = streamFormat(hardware, *observed.stream, kAudioStreamPropertyPhysicalFormat);
    }
    state.transportType = transportType(hardware, device);
    if (state.transportType == DeviceTransport::usb) {
        state.usbInfo = USBDescriptors::infoForCoreAudioUID(state.uid, seams_.usb);
    }
    if (state.transportType == DeviceTransport::bluetooth) {
        state.bluetoothInfo = BluetoothDevices::infoMatchingName(state.name, seams_.bluetooth);
    }
    if (ProcessAudio::hasSource(hardware, seams_.operatingSystem)) state.isRunning = true;
    state.mixerWork = hardware.mixerWork(device);
    return observed;
}

void AudioMonitor::publishState(std::optional<DeviceState> state) {
    seams_.mainLoop.post([weak = weak_from_this(), state = std::move(state)] {
        if (const auto self = weak.lock()) self->state_.set(state);
    });
}

}  // namespace purlock
