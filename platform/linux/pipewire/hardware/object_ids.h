#pragma once

#include <compare>
#include <cstdint>
#include <map>

#include "audio/audio_hardware.h"

namespace purlock::host_linux {

enum class ObjectKind { device, stream, process, hardwareOwner };

/// The identity of an object: the connection on which it was seen, and its serial there, which the server
/// does not use again.
struct ObjectKey {
    ObjectKind kind = ObjectKind::device;
    std::uint64_t connection = 0;
    std::uint64_t number = 0;

    auto operator<=>(const ObjectKey&) const =
        default;  // NOLINT(modernize-use-nullptr): it means the default's own 0
};

/// Gives out the object ids of the hardware layer: never one twice in a run. One thread.
class ObjectIDs {
  public:
    /// The object's id: the one that it had when it was last asked for, unless a sweep has gone by without
    /// it.
    AudioObjectID idFor(const ObjectKey& key) {
        Entry& entry = entries_[key];
        if (entry.id == 0) entry.id = ++last_;
        entry.sweep = sweep_;
        return entry.id;
    }

    /// Forgets every object that was not asked for since the last sweep.
    void sweep() {
        std::erase_if(entries_, [this](const auto& each) { return each.second.sweep != sweep_; });
        ++sweep_;
    }

  private:
    struct Entry {
        AudioObjectID id = 0;
        std::uint64_t sweep = 0;
    };

    std::map<ObjectKey, Entry> entries_;
    AudioObjectID last_ = kAudioObjectSystemObject;
    std::uint64_t sweep_ = 0;
};

}  // namespace purlock::host_linux
