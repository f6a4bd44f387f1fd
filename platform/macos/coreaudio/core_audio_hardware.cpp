#include "platform/macos/coreaudio/core_audio_hardware.h"

#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <utility>

#include "platform/macos/coreaudio/owned_block.h"
#include "platform/macos/corefoundation/text.h"
#include "platform/macos/dispatch/autorelease_pool.h"
#include "platform/macos/dispatch/native_queue.h"

namespace purlock::host_macos {

namespace {

AudioObjectPropertyAddress nativeAddress(const PropertyAddress& address) {
    return {.mSelector = address.selector, .mScope = address.scope, .mElement = address.element};
}

}  // namespace

/// A listener that the HAL has. The HAL finds it by object, address, queue and block, so that all four are
/// kept until the removal.
class CoreAudioHardware::InstalledListener {
  public:
    InstalledListener(AudioObjectID object, const PropertyAddress& address,
                      std::shared_ptr<SerialQueue> queue, ListenerBlock listener)
        : object_(object),
          address_(address),
          queue_(std::move(queue)),
          listener_(listener),
          // The block's own copy of `listener`: a reference would be captured as such.
          block_(^(UInt32 /*count*/, const AudioObjectPropertyAddress* /*addresses*/) {
            const AutoreleasePool pool;
            (*listener)();
          }) {}

    HardwareStatus add() const {
        const auto address = nativeAddress(address_);
        return AudioObjectAddPropertyListenerBlock(object_, &address, nativeQueue(*queue_), block_.get());
    }

    HardwareStatus remove() const {
        const auto address = nativeAddress(address_);
        return AudioObjectRemovePropertyListenerBlock(object_, &address, nativeQueue(*queue_), block_.get());
    }

    bool is(AudioObjectID object, const PropertyAddress& address, const std::shared_ptr<SerialQueue>& queue,
            const ListenerBlock& listener) const {
        return object_ == object && address_ == address && queue_ == queue && listener_ == listener;
    }

  private:
    const AudioObjectID object_;
    const PropertyAddress address_;
    const std::shared_ptr<SerialQueue> queue_;
    const ListenerBlock listener_;
    const OwnedBlock<AudioObjectPropertyListenerBlock> block_;
};

CoreAudioHardware::CoreAudioHardware() = default;

CoreAudioHardware::~CoreAudioHardware() {
    for (const auto& listener : listeners_) listener->remove();
}

HardwareStatus CoreAudioHardware::getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                                      std::uint32_t& size) {
    const auto native = nativeAddress(address);
    return AudioObjectGetPropertyDataSize(object, &native, 0, nullptr, &size);
}

HardwareStatus CoreAudioHardware::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                                  std::uint32_t& size, void* data) {
    const auto native = nativeAddress(address);
    return AudioObjectGetPropertyData(object, &native, 0, nullptr, &size, data);
}

HardwareStatus CoreAudioHardware::getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                                  std::optional<std::string>& text) {
    const auto native = nativeAddress(address);
    Owned<CFStringRef> string;  // the HAL hands out a reference of its own
    UInt32 size = sizeof(CFStringRef);
    const OSStatus status = AudioObjectGetPropertyData(object, &native, 0, nullptr, &size, string.out());
    if (status == noErr) text = textOf(string.get());
    return status;
}

HardwareStatus CoreAudioHardware::addPropertyListenerBlock(AudioObjectID object,
                                                           const PropertyAddress& address,
                                                           const std::shared_ptr<SerialQueue>& queue,
                                                           const ListenerBlock& block) {
    auto listener = std::make_unique<InstalledListener>(object, address, queue, block);
    const HardwareStatus status = listener->add();
    if (status != noErr) return status;
    const std::lock_guard lock(mutex_);
    listeners_.push_back(std::move(listener));
    return noErr;
}

HardwareStatus CoreAudioHardware::removePropertyListenerBlock(AudioObjectID object,
                                                              const PropertyAddress& address,
                                                              const std::shared_ptr<SerialQueue>& queue,
                                                              const ListenerBlock& block) {
    std::unique_ptr<InstalledListener> listener;
    {
        const std::lock_guard lock(mutex_);
        const auto found = std::ranges::find_if(
            listeners_, [&](const auto& candidate) { return candidate->is(object, address, queue, block); });
        if (found == listeners_.end()) return kAudioHardwareUnknownPropertyError;
        listener = std::move(*found);
        listeners_.erase(found);
    }
    return listener->remove();
}

}  // namespace purlock::host_macos
