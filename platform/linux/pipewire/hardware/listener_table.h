#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

#include "audio/audio_hardware.h"
#include "platform/linux/pipewire/hardware/answers.h"

namespace purlock::host_linux {

/// The listeners of each property. Any thread.
class ListenerTable {
  public:
    void add(AudioObjectID object, const PropertyAddress& address, const std::shared_ptr<SerialQueue>& queue,
             const ListenerBlock& block);

    /// True if there was such a listener; of several equal ones, one is removed.
    bool remove(AudioObjectID object, const PropertyAddress& address,
                const std::shared_ptr<SerialQueue>& queue, const ListenerBlock& block);

    /// Hands the blocks of properties that changed in one moment to their queues. Listeners that share a
    /// queue read everything again when one of them is told. So only the listeners of a queue's first changed
    /// property are told: a change of several properties is told once. A device's streams are the same in the
    /// output and in the global scope, so a listener hears of a change in either.
    void notify(std::span<const Answers::Change> changes);

    std::size_t size() const;

  private:
    struct Entry {
        PropertyAddress address;
        std::shared_ptr<SerialQueue> queue;
        ListenerBlock block;

        bool operator==(const Entry&) const = default;
    };

    mutable std::mutex mutex_;
    std::map<std::pair<AudioObjectID, std::uint32_t>, std::vector<Entry>> entries_;  // by object and selector
};

}  // namespace purlock::host_linux
