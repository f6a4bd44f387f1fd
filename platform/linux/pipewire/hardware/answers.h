#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "audio/audio_hardware.h"

namespace purlock::host_linux {

/// A device as the hardware layer shows it. The members are laid out as their properties are read.
struct DeviceAnswers {
    AudioObjectID id = 0;
    std::vector<AudioObjectID> streams;  // none or one
    std::string name;
    std::string uid;
    std::uint32_t transport = 0;
    std::uint32_t isRunning = 0;
    std::optional<StreamDescription> virtualFormat;
    std::optional<StreamDescription> physicalFormat;
    MixerWork mixerWork;
};

struct ProcessAnswers {
    AudioObjectID id = 0;
    std::int32_t processIdentifier = 0;
    std::optional<std::string> bundleID;
    std::uint32_t isRunningOutput = 0;
    std::vector<AudioObjectID> devices;
};

/// The answers to every question that the hardware layer can be asked, all of one moment. Made on the loop's
/// thread, then never changed, so that any thread may read it without a lock.
class Answers {
  public:
    Answers() = default;
    Answers(std::vector<DeviceAnswers> devices, AudioObjectID defaultOutput,
            std::vector<ProcessAnswers> processes);

    /// A property's value as bytes. When the object is not there or has no such property, `status` says so.
    struct Value {
        HardwareStatus status = noErr;
        std::span<const std::byte> bytes;
    };
    Value value(AudioObjectID object, const PropertyAddress& address) const;

    struct Text {
        HardwareStatus status = noErr;
        const std::string* text = nullptr;  // null for a null reference
    };
    Text text(AudioObjectID object, const PropertyAddress& address) const;

    /// Absent when there is no such device.
    std::optional<MixerWork> mixerWork(AudioObjectID device) const;

    bool holds(AudioObjectID object) const { return find(object).kind != Kind::none; }

    const std::vector<DeviceAnswers>& devices() const { return devices_; }
    const std::vector<ProcessAnswers>& processes() const { return processes_; }
    AudioObjectID defaultOutput() const { return defaultOutput_; }

    /// A property of an object, in any scope.
    struct Change {
        AudioObjectID object = 0;
        std::uint32_t selector = 0;

        bool operator==(const Change&) const = default;
    };

    /// The properties whose value differs from `before`, of the objects that are in both. The system's come
    /// first, the list of devices before the default.
    std::vector<Change> changesSince(const Answers& before) const;

  private:
    enum class Kind { none, system, device, stream, process };
    struct Place {
        Kind kind = Kind::none;
        std::size_t index = 0;
    };

    Place find(AudioObjectID object) const;
    Value systemValue(std::uint32_t selector) const;
    static Value deviceValue(const DeviceAnswers& device, const PropertyAddress& address);
    static Value streamValue(const DeviceAnswers& device, std::uint32_t selector);
    static Value processValue(const ProcessAnswers& process, std::uint32_t selector);
    void addChanges(std::vector<Change>& changes, const Answers& before, AudioObjectID object,
                    std::span<const std::uint32_t> selectors) const;

    std::vector<DeviceAnswers> devices_;
    AudioObjectID defaultOutput_ = 0;
    std::vector<ProcessAnswers> processes_;
    std::vector<AudioObjectID> deviceIDs_;
    std::vector<AudioObjectID> processIDs_;
    std::unordered_map<AudioObjectID, Place> places_;
};

}  // namespace purlock::host_linux
