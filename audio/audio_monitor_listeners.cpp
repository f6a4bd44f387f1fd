// How the audio monitor learns of changes: which properties it watches on which objects, and what each one
// triggers.

#include <string>

#include "audio/audio_monitor.h"

namespace purlock {

void AudioMonitor::installListener(AudioObjectID objectID, std::uint32_t selector, std::uint32_t scope,
                                   Listeners& store, Action action) {
    const ListenerKey key{objectID, selector, scope};
    if (store.contains(key)) return;
    const PropertyAddress address{selector, scope, kAudioObjectPropertyElementMain};
    const auto block = std::make_shared<const std::function<void()>>([weak = weak_from_this(), action] {
        if (const auto self = weak.lock()) (self.get()->*action)();
    });
    // A listener that the layer refuses is not recorded, so that a later call may try again.
    if (seams_.hardware.addPropertyListenerBlock(objectID, address, queue_, block) == noErr) {
        store.emplace(key, InstalledListener{address, block});
    }
}

void AudioMonitor::installSystemListeners() {
    struct Watched {
        std::uint32_t selector;
        Action action;
    };
    static constexpr Watched watched[] = {
        {kAudioHardwarePropertyDefaultOutputDevice, &AudioMonitor::readState},
        {kAudioHardwarePropertyDevices, &AudioMonitor::readDevicesAndState},
    };
    for (const Watched& property : watched) {
        installListener(kAudioObjectSystemObject, property.selector, kAudioObjectPropertyScopeGlobal,
                        systemListeners_, property.action);
    }
}

void AudioMonitor::installDeviceListeners(AudioObjectID deviceID, std::optional<AudioObjectID> streamID) {
    struct Watched {
        std::uint32_t selector;
        std::uint32_t scope;
    };
    static constexpr Watched onDevice[] = {
        {kAudioDevicePropertyDeviceIsRunningSomewhere, kAudioObjectPropertyScopeGlobal},
        {kAudioDevicePropertyNominalSampleRate, kAudioObjectPropertyScopeGlobal},
        {kAudioDevicePropertyStreams, kAudioObjectPropertyScopeOutput},
    };
    static constexpr Watched onStream[] = {
        {kAudioStreamPropertyVirtualFormat, kAudioObjectPropertyScopeGlobal},
        {kAudioStreamPropertyPhysicalFormat, kAudioObjectPropertyScopeGlobal},
    };
    const auto watch = [this](AudioObjectID object, const Watched& property) {
        installListener(object, property.selector, property.scope, deviceListeners_,
                        &AudioMonitor::readState);
    };
    for (const Watched& property : onDevice) watch(deviceID, property);
    if (!streamID) return;
    for (const Watched& property : onStream) watch(*streamID, property);
}

/// Moves the device's listeners when the device or its first stream is another than before.
void AudioMonitor::followDevice(AudioObjectID device, std::optional<AudioObjectID> stream) {
    if (device == currentDeviceID_ && stream == currentStreamID_) return;
    uninstall(deviceListeners_);
    currentDeviceID_ = device;
    currentStreamID_ = stream;
    installDeviceListeners(device, stream);
}

void AudioMonitor::uninstall(Listeners& listeners) {
    for (const auto& [key, listener] : listeners) {
        seams_.hardware.removePropertyListenerBlock(key.objectID, listener.address, queue_, listener.block);
    }
    listeners.clear();
}

}  // namespace purlock
