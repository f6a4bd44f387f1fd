#include "platform/linux/pipewire/hardware/listener_table.h"

#include <algorithm>

namespace purlock::host_linux {

void ListenerTable::add(AudioObjectID object, const PropertyAddress& address,
                        const std::shared_ptr<SerialQueue>& queue, const ListenerBlock& block) {
    const std::lock_guard lock(mutex_);
    entries_[{object, address.selector}].push_back({address, queue, block});
}

bool ListenerTable::remove(AudioObjectID object, const PropertyAddress& address,
                           const std::shared_ptr<SerialQueue>& queue, const ListenerBlock& block) {
    Entry removed;  // what the block owns ends after the lock
    const std::lock_guard lock(mutex_);
    const auto place = entries_.find({object, address.selector});
    if (place == entries_.end()) return false;
    auto& entries = place->second;
    const auto entry = std::find(entries.begin(), entries.end(), Entry{address, queue, block});
    if (entry == entries.end()) return false;
    removed = std::move(*entry);
    entries.erase(entry);
    if (entries.empty()) entries_.erase(place);
    return true;
}

void ListenerTable::notify(std::span<const Answers::Change> changes) {
    std::vector<Entry> due;
    {
        const std::lock_guard lock(mutex_);
        for (const Answers::Change& change : changes) {
            const auto place = entries_.find({change.object, change.selector});
            if (place == entries_.end()) continue;
            const std::size_t told = due.size();
            for (const Entry& entry : place->second) {
                const auto isSameQueue = [&](const Entry& other) { return other.queue == entry.queue; };
                if (std::none_of(due.begin(), due.begin() + static_cast<std::ptrdiff_t>(told), isSameQueue)) {
                    due.push_back(entry);
                }
            }
        }
    }
    for (const Entry& entry : due) {
        entry.queue->async([block = entry.block] { (*block)(); });
    }
}

std::size_t ListenerTable::size() const {
    const std::lock_guard lock(mutex_);
    std::size_t count = 0;
    for (const auto& [key, entries] : entries_) count += entries.size();
    return count;
}

}  // namespace purlock::host_linux
