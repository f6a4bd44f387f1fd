#include "tests/support/fake_audio_hardware.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "core/audio_format.h"

namespace purlock::test {

namespace {

constexpr std::uint32_t global = kAudioObjectPropertyScopeGlobal;
constexpr std::uint32_t output = kAudioObjectPropertyScopeOutput;

template <typename Value>
FakeAudioHardware::Bytes bytesOf(const Value* values, std::size_t count) {
    FakeAudioHardware::Bytes bytes(sizeof(Value) * count);
    if (count > 0) std::memcpy(bytes.data(), values, bytes.size());
    return bytes;
}

}  // namespace

void FakeAudioHardware::setBytes(AudioObjectID object, std::uint32_t selector, std::uint32_t scope,
                                 Bytes bytes) {
    const std::lock_guard lock(mutex_);
    Property property;
    property.bytes = std::move(bytes);
    properties_[{object, selector, scope}] = std::move(property);
}

void FakeAudioHardware::setObjects(AudioObjectID object, std::uint32_t selector, std::uint32_t scope,
                                   const std::vector<AudioObjectID>& objects) {
    setBytes(object, selector, scope, bytesOf(objects.data(), objects.size()));
}

void FakeAudioHardware::setValue(AudioObjectID object, std::uint32_t selector, std::uint32_t value) {
    setBytes(object, selector, global, bytesOf(&value, 1));
}

void FakeAudioHardware::setText(AudioObjectID object, std::uint32_t selector,
                                std::optional<std::string> text) {
    const std::lock_guard lock(mutex_);
    Property property;
    property.text = std::move(text);
    property.isText = true;
    properties_[{object, selector, global}] = std::move(property);
}

void FakeAudioHardware::setFormat(AudioObjectID stream, std::uint32_t selector,
                                  const StreamDescription& description) {
    setBytes(stream, selector, global, bytesOf(&description, 1));
}

void FakeAudioHardware::remove(AudioObjectID object, std::uint32_t selector, std::uint32_t scope) {
    const std::lock_guard lock(mutex_);
    properties_.erase({object, selector, scope});
}

void FakeAudioHardware::removeObject(AudioObjectID object) {
    const std::lock_guard lock(mutex_);
    std::erase_if(properties_, [&](const auto& entry) { return entry.first.object == object; });
}

void FakeAudioHardware::refuseSize(AudioObjectID object, std::uint32_t selector, std::uint32_t scope) {
    const std::lock_guard lock(mutex_);
    properties_[{object, selector, scope}].sizeRefused = true;
}

void FakeAudioHardware::refuseData(AudioObjectID object, std::uint32_t selector, std::uint32_t scope) {
    const std::lock_guard lock(mutex_);
    properties_[{object, selector, scope}].dataRefused = true;
}

void FakeAudioHardware::lieAboutSize(AudioObjectID object, std::uint32_t selector, std::uint32_t scope,
                                     std::uint32_t size) {
    const std::lock_guard lock(mutex_);
    properties_[{object, selector, scope}].saidSize = size;
}

void FakeAudioHardware::refuseListeners(bool refused) {
    const std::lock_guard lock(mutex_);
    listenersRefused_ = refused;
}

void FakeAudioHardware::onRead(std::function<void(AudioObjectID, std::uint32_t)> callback) {
    const std::lock_guard lock(mutex_);
    onRead_ = std::move(callback);
}

void FakeAudioHardware::notify(AudioObjectID object, std::uint32_t selector, std::uint32_t scope) {
    for (const Listener& listener : listeners()) {
        if (listener.object != object || listener.address.selector != selector ||
            listener.address.scope != scope) {
            continue;
        }
        listener.queue->async([block = listener.block] { (*block)(); });
    }
}

std::vector<FakeAudioHardware::Read> FakeAudioHardware::takeReads() {
    const std::lock_guard lock(mutex_);
    return std::exchange(reads_, {});
}

std::vector<FakeAudioHardware::Listener> FakeAudioHardware::listeners() const {
    const std::lock_guard lock(mutex_);
    return listeners_;
}

int FakeAudioHardware::strayRemovals() const {
    const std::lock_guard lock(mutex_);
    return strayRemovals_;
}

FakeAudioHardware::Key FakeAudioHardware::keyOf(AudioObjectID object, const PropertyAddress& address) {
    return {object, address.selector, address.scope};
}

void FakeAudioHardware::beforeRead(AudioObjectID object, const PropertyAddress& address) {
    std::function<void(AudioObjectID, std::uint32_t)> callback;
    {
        const std::lock_guard lock(mutex_);
        reads_.push_back({object, address.selector});
        callback = onRead_;
    }
    if (callback) callback(object, address.selector);
}

const FakeAudioHardware::Property* FakeAudioHardware::find(AudioObjectID object,
                                                           const PropertyAddress& address) const {
    const auto found = properties_.find(keyOf(object, address));
    return found != properties_.end() && address.element == kAudioObjectPropertyElementMain ? &found->second
                                                                                            : nullptr;
}

bool FakeAudioHardware::holdsText(AudioObjectID object, const PropertyAddress& address) const {
    const std::lock_guard lock(mutex_);
    const Property* const property = find(object, address);
    return property != nullptr && property->isText;
}

HardwareStatus FakeAudioHardware::getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                                      std::uint32_t& size) {
    beforeRead(object, address);
    const std::lock_guard lock(mutex_);
    const Property* const property = find(object, address);
    if (property == nullptr) return kAudioHardwareUnknownPropertyError;
    if (property->sizeRefused) return kAudioHardwareBadObjectError;
    size = property->saidSize.value_or(static_cast<std::uint32_t>(property->bytes.size()));
    return noErr;
}

HardwareStatus FakeAudioHardware::getPropertyData(AudioObjectID object, const PropertyAddress& address,
                                                  std::uint32_t& size, void* data) {
    beforeRead(object, address);
    const std::lock_guard lock(mutex_);
    const Property* const property = find(object, address);
    if (property == nullptr || property->isText) return kAudioHardwareUnknownPropertyError;
    if (property->dataRefused) return kAudioHardwareBadObjectError;
    size = std::min(size, static_cast<std::uint32_t>(property->bytes.size()));
    if (size > 0) std::memcpy(data, property->bytes.data(), size);
    return noErr;
}

HardwareStatus FakeAudioHardware::getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                                  std::optional<std::string>& text) {
    beforeRead(object, address);
    const std::lock_guard lock(mutex_);
    const Property* const property = find(object, address);
    if (property == nullptr || !property->isText) return kAudioHardwareUnknownPropertyError;
    if (property->dataRefused) return kAudioHardwareBadObjectError;
    text = property->text;
    return noErr;
}

void FakeAudioHardware::setMixerWork(AudioObjectID device, const MixerWork& work) {
    const std::lock_guard lock(mutex_);
    mixerWork_[device] = work;
}

void FakeAudioHardware::holdPicturesStill() {
    picturesAreStill_ = true;
}

std::optional<MixerWork> FakeAudioHardware::mixerWork(AudioObjectID device) {
    const std::lock_guard lock(mutex_);
    const auto found = mixerWork_.find(device);
    return found == mixerWork_.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<AudioProperties> FakeAudioHardware::picture() {
    if (!picturesAreStill_) return AudioHardware::picture();
    auto still = std::make_shared<FakeAudioHardware>();
    const std::lock_guard lock(mutex_);
    still->properties_ = properties_;
    still->mixerWork_ = mixerWork_;
    still->onRead_ = onRead_;
    return still;
}

HardwareStatus FakeAudioHardware::addPropertyListenerBlock(AudioObjectID object,
                                                           const PropertyAddress& address,
                                                           const std::shared_ptr<SerialQueue>& queue,
                                                           const ListenerBlock& block) {
    const std::lock_guard lock(mutex_);
    if (listenersRefused_) return kAudioHardwareBadObjectError;
    listeners_.push_back({object, address, queue, block});
    return noErr;
}

HardwareStatus FakeAudioHardware::removePropertyListenerBlock(AudioObjectID object,
                                                              const PropertyAddress& address,
                                                              const std::shared_ptr<SerialQueue>& queue,
                                                              const ListenerBlock& block) {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find_if(listeners_, [&](const Listener& listener) {
        return listener.object == object && listener.address == address && listener.queue == queue &&
               listener.block == block;
    });
    if (found == listeners_.end()) {
        ++strayRemovals_;
        return kAudioHardwareUnknownPropertyError;
    }
    listeners_.erase(found);
    return noErr;
}

void FakeDevice::addTo(FakeAudioHardware& hardware) const {
    hardware.setText(id, kAudioObjectPropertyName, name);
    hardware.setText(id, kAudioDevicePropertyDeviceUID, uid);
    hardware.setValue(id, kAudioDevicePropertyDeviceIsRunningSomewhere, isRunning ? 1 : 0);
    hardware.setValue(id, kAudioDevicePropertyTransportType, transport);
    std::vector<AudioObjectID> streams;
    if (stream != 0) streams.push_back(stream);
    hardware.setObjects(id, kAudioDevicePropertyStreams, output, streams);
    if (stream == 0) return;
    hardware.setFormat(stream, kAudioStreamPropertyVirtualFormat, virtualFormat);
    hardware.setFormat(stream, kAudioStreamPropertyPhysicalFormat, physicalFormat);
}

void FakeProcess::addTo(FakeAudioHardware& hardware) const {
    hardware.setValue(id, kAudioProcessPropertyPID, std::bit_cast<std::uint32_t>(pid));
    hardware.setText(id, kAudioProcessPropertyBundleID, bundleID);
    hardware.setValue(id, kAudioProcessPropertyIsRunningOutput, isRunningOutput ? 1 : 0);
    hardware.setObjects(id, kAudioProcessPropertyDevices, output, devices);
}

StreamDescription floatStream(double rate) {
    return {rate, formatLinearPCM, formatFlagIsFloat | formatFlagIsPacked, 8, 1, 8, 2, 32, 0};
}

StreamDescription integerStream(double rate, std::uint32_t bits) {
    const std::uint32_t frame = 2 * bits / 8;
    return {rate, formatLinearPCM, formatFlagIsSignedInteger | formatFlagIsPacked, frame, 1, frame, 2, bits,
            0};
}

}  // namespace purlock::test
