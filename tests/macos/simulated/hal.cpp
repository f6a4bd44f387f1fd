#include "tests/macos/simulated/hal.h"

#include <Block.h>
#include <CoreAudio/CoreAudio.h>

#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

#include "tests/macos/simulated/core_foundation.h"
#include "tests/macos/simulated/dispatch.h"

namespace purlock::simulated {

namespace {

Hal* current = nullptr;

using NativeBlock = AudioObjectPropertyListenerBlock;

/// What the HAL keeps of a listener: a copy of the block, and the queue.
struct KeptListener {
    KeptListener(NativeBlock original, dispatch_queue_t itsQueue,
                 const AudioObjectPropertyAddress& itsAddress)
        : block(Block_copy(original)), queue(itsQueue), address(itsAddress) {
        dispatch_retain(queue);
    }
    ~KeptListener() {
        Block_release(block);
        dispatch_release(queue);
    }
    KeptListener(const KeptListener&) = delete;
    KeptListener& operator=(const KeptListener&) = delete;

    const NativeBlock block;
    const dispatch_queue_t queue;
    const AudioObjectPropertyAddress address;
};

PropertyAddress portable(const AudioObjectPropertyAddress& address) {
    return {address.mSelector, address.mScope, address.mElement};
}

}  // namespace

struct Hal::Listeners {
    struct Entry {
        AudioObjectID object;
        std::shared_ptr<KeptListener> kept;
        ListenerBlock portableBlock;  // by which the fake layer knows it
    };
    std::mutex mutex;
    std::vector<Entry> entries;
};

Hal::Hal(test::FakeAudioHardware& hardware)
    : hardware_(hardware), listeners_(std::make_unique<Listeners>()), outer_(std::exchange(current, this)) {}

Hal::~Hal() {
    current = outer_;
}

}  // namespace purlock::simulated

using namespace purlock;
using namespace purlock::simulated;

extern "C" {

OSStatus AudioObjectGetPropertyDataSize(::AudioObjectID inObjectID,
                                        const AudioObjectPropertyAddress* inAddress,
                                        UInt32 inQualifierDataSize, const void* inQualifierData,
                                        UInt32* outDataSize) {
    if (inQualifierDataSize != 0 || inQualifierData != nullptr) std::abort();
    return current->hardware().getPropertyDataSize(inObjectID, portable(*inAddress), *outDataSize);
}

OSStatus AudioObjectGetPropertyData(::AudioObjectID inObjectID, const AudioObjectPropertyAddress* inAddress,
                                    UInt32 inQualifierDataSize, const void* inQualifierData,
                                    UInt32* ioDataSize, void* outData) {
    if (inQualifierDataSize != 0 || inQualifierData != nullptr) std::abort();
    auto& hardware = current->hardware();
    const PropertyAddress address = portable(*inAddress);
    if (!hardware.holdsText(inObjectID, address)) {
        return hardware.getPropertyData(inObjectID, address, *ioDataSize, outData);
    }
    if (*ioDataSize != sizeof(CFStringRef)) return ::kAudioHardwareBadPropertySizeError;
    std::optional<std::string> text;
    const HardwareStatus status = hardware.getPropertyText(inObjectID, address, text);
    if (status == ::noErr) *static_cast<CFStringRef*>(outData) = text ? makeString(*text) : nullptr;
    return status;
}

OSStatus AudioObjectAddPropertyListenerBlock(::AudioObjectID inObjectID,
                                             const AudioObjectPropertyAddress* inAddress,
                                             dispatch_queue_t inDispatchQueue,
                                             AudioObjectPropertyListenerBlock inListener) {
    const auto kept = std::make_shared<KeptListener>(inListener, inDispatchQueue, *inAddress);
    const auto block =
        std::make_shared<const std::function<void()>>([kept] { kept->block(1, &kept->address); });
    const HardwareStatus status = current->hardware().addPropertyListenerBlock(
        inObjectID, portable(*inAddress), targetOf(inDispatchQueue), block);
    if (status != ::noErr) return status;
    auto& listeners = current->listeners();
    const std::lock_guard lock(listeners.mutex);
    listeners.entries.push_back({inObjectID, kept, block});
    return ::noErr;
}

OSStatus AudioObjectRemovePropertyListenerBlock(::AudioObjectID inObjectID,
                                                const AudioObjectPropertyAddress* inAddress,
                                                dispatch_queue_t inDispatchQueue,
                                                AudioObjectPropertyListenerBlock inListener) {
    auto& listeners = current->listeners();
    ListenerBlock
        block;  // stays null when the HAL has no such listener, and the fake layer counts a stray removal
    std::shared_ptr<KeptListener> removed;
    {
        const std::lock_guard lock(listeners.mutex);
        for (auto entry = listeners.entries.begin(); entry != listeners.entries.end(); ++entry) {
            if (entry->object != inObjectID || portable(entry->kept->address) != portable(*inAddress) ||
                entry->kept->queue != inDispatchQueue || entry->kept->block != inListener) {
                continue;
            }
            block = entry->portableBlock;
            removed = entry->kept;
            listeners.entries.erase(entry);
            break;
        }
    }
    return current->hardware().removePropertyListenerBlock(inObjectID, portable(*inAddress),
                                                           targetOf(inDispatchQueue), block);
}
}
