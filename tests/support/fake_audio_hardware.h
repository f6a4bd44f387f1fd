#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_hardware.h"

namespace purlock::test {

/// A hardware layer in memory: a store of properties that can also refuse, shrink, lie about sizes and vanish
/// in mid-read. Any thread.
class FakeAudioHardware final : public AudioHardware {
  public:
    using Bytes = std::vector<std::uint8_t>;

    // Filling the store. Values replace what was there; nothing is notified.
    void setBytes(AudioObjectID object, std::uint32_t selector, std::uint32_t scope, Bytes bytes);
    void setObjects(AudioObjectID object, std::uint32_t selector, std::uint32_t scope,
                    const std::vector<AudioObjectID>& objects);
    void setValue(AudioObjectID object, std::uint32_t selector, std::uint32_t value);
    void setText(AudioObjectID object, std::uint32_t selector, std::optional<std::string> text);
    void setFormat(AudioObjectID stream, std::uint32_t selector, const StreamDescription& description);
    void setMixerWork(AudioObjectID device, const MixerWork& work);
    void remove(AudioObjectID object, std::uint32_t selector, std::uint32_t scope);
    void removeObject(AudioObjectID object);

    // Misbehaving.
    void refuseSize(AudioObjectID object, std::uint32_t selector, std::uint32_t scope);
    void refuseData(AudioObjectID object, std::uint32_t selector, std::uint32_t scope);
    void lieAboutSize(AudioObjectID object, std::uint32_t selector, std::uint32_t scope, std::uint32_t size);
    void refuseListeners(bool refused);
    /// Pictures hold the store still from now on; at first they are the store itself.
    void holdPicturesStill();
    /// Called before each read with its object and selector, with no lock held: it may change the store.
    void onRead(std::function<void(AudioObjectID, std::uint32_t)> callback);

    /// Has every listener of the property run on its queue.
    void notify(AudioObjectID object, std::uint32_t selector, std::uint32_t scope);

    struct Read {
        AudioObjectID object = 0;
        std::uint32_t selector = 0;

        bool operator==(const Read&) const = default;
    };
    /// The reads since the last call, sizes and data alike.
    std::vector<Read> takeReads();

    struct Listener {
        AudioObjectID object = 0;
        PropertyAddress address;
        std::shared_ptr<SerialQueue> queue;
        ListenerBlock block;
    };
    /// The installed listeners, in the order of their installation.
    std::vector<Listener> listeners() const;
    /// Removals that named no installed listener.
    int strayRemovals() const;

    /// True if the property's value is a text; no read.
    bool holdsText(AudioObjectID object, const PropertyAddress& address) const;

    // AudioHardware
    HardwareStatus getPropertyDataSize(AudioObjectID object, const PropertyAddress& address,
                                       std::uint32_t& size) override;
    HardwareStatus getPropertyData(AudioObjectID object, const PropertyAddress& address, std::uint32_t& size,
                                   void* data) override;
    HardwareStatus getPropertyText(AudioObjectID object, const PropertyAddress& address,
                                   std::optional<std::string>& text) override;
    std::optional<MixerWork> mixerWork(AudioObjectID device) override;
    std::shared_ptr<AudioProperties> picture() override;
    HardwareStatus addPropertyListenerBlock(AudioObjectID object, const PropertyAddress& address,
                                            const std::shared_ptr<SerialQueue>& queue,
                                            const ListenerBlock& block) override;
    HardwareStatus removePropertyListenerBlock(AudioObjectID object, const PropertyAddress& address,
                                               const std::shared_ptr<SerialQueue>& queue,
                                               const ListenerBlock& block) override;

  private:
    struct Key {
        AudioObjectID object = 0;
        std::uint32_t selector = 0;
        std::uint32_t scope = 0;

        auto operator<=>(const Key&) const = default;
    };
    struct Property {
        Bytes bytes;
        std::optional<std::string> text;
        bool isText = false;
        bool sizeRefused = false;
        bool dataRefused = false;
        std::optional<std::uint32_t> saidSize;
    };

    static Key keyOf(AudioObjectID object, const PropertyAddress& address);
    void beforeRead(AudioObjectID object, const PropertyAddress& address);
    const Property* find(AudioObjectID object, const PropertyAddress& address) const;

    mutable std::mutex mutex_;
    std::map<Key, Property> properties_;
    std::map<AudioObjectID, MixerWork> mixerWork_;
    bool picturesAreStill_ = false;
    std::vector<Listener> listeners_;
    std::vector<Read> reads_;
    std::function<void(AudioObjectID, std::uint32_t)> onRead_;
    bool listenersRefused_ = false;
    int strayRemovals_ = 0;
};

/// A device of the fake layer with one output stream, as `addTo` lays it out.
struct FakeDevice {
    AudioObjectID id = 0;
    std::string name;
    std::string uid;
    AudioObjectID stream = 0;  // 0: no output stream
    StreamDescription virtualFormat;
    StreamDescription physicalFormat;
    bool isRunning = false;
    std::uint32_t transport = 0;

    void addTo(FakeAudioHardware& hardware) const;
};

/// A process object of the fake layer, as `addTo` lays it out.
struct FakeProcess {
    AudioObjectID id = 0;
    std::int32_t pid = 0;
    std::optional<std::string> bundleID;
    bool isRunningOutput = false;
    std::vector<AudioObjectID> devices;

    void addTo(FakeAudioHardware& hardware) const;
};

/// 32-bit float at `rate`, and integers of `bits` bits: two channels, interleaved.
StreamDescription floatStream(double rate);
StreamDescription integerStream(double rate, std::uint32_t bits);

}  // namespace purlock::test
