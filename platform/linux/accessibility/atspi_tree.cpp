#include "platform/linux/accessibility/atspi_tree.h"

#include <utility>

#include "platform/linux/accessibility/accessibility_bus.h"
#include "platform/linux/accessibility/application_reader.h"
#include "platform/linux/accessibility/application_registry.h"
#include "platform/linux/accessibility/snapshot_element.h"

namespace purlock::host_linux {

/// What the main thread reads and the bus thread fills.
struct AtSpiTree::Shelf {
    struct Entry {
        std::shared_ptr<const Snapshot> snapshot;
        Moment taken;
    };

    std::mutex mutex;
    bool trusted = false;                   // guarded by mutex
    std::map<std::int32_t, Entry> entries;  // by process id; guarded by mutex
};

/// Reads applications when they are asked for; on the bus thread.
class AtSpiTree::Worker {
  public:
    Worker(BusThread& thread, const std::string& busAddress, std::shared_ptr<Shelf> shelf)
        : thread_(thread),
          shelf_(std::move(shelf)),
          sweep_(thread),
          bus_(thread, busAddress, [this](bool usable) { changeTrust(usable); }) {}
    ~Worker() { changeTrust(false); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void want(std::int32_t pid) {
        if (!registry_ || reads_.contains(pid) || reads_.size() >= maximumReads) return;
        const auto now = std::chrono::steady_clock::now();
        if (const auto last = lastRead_.find(pid);
            last != lastRead_.end() && now - last->second < pauseBetweenReads) {
            return;
        }
        lastRead_[pid] = now;
        reads_[pid] = nullptr;
        registry_->find(pid, [this, pid](const std::optional<std::string>& busName) { read(pid, busName); });
    }

    void enable() { bus_.enable(); }

  private:
    static constexpr std::size_t maximumReads = 8;

    void changeTrust(bool trusted) {
        reads_.clear();
        lastRead_.clear();
        registry_.reset();
        if (trusted) registry_ = std::make_unique<ApplicationRegistry>(bus_.connection());
        const std::lock_guard lock(shelf_->mutex);
        shelf_->trusted = trusted;
        shelf_->entries.clear();
    }

    void read(std::int32_t pid, const std::optional<std::string>& busName) {
        if (!busName) return finish(pid, std::nullopt);
        reads_[pid] = std::make_unique<ApplicationReader>(
            thread_, bus_.connection(), *busName,
            [this, pid](std::optional<Snapshot> snapshot) { finish(pid, std::move(snapshot)); });
    }

    /// A read that failed leaves the last snapshot to grow too old; an application that is gone leaves none.
    void finish(std::int32_t pid, std::optional<Snapshot> snapshot) {
        const bool isGone = !reads_[pid];
        reads_.erase(pid);
        {
            const std::lock_guard lock(shelf_->mutex);
            if (snapshot) {
                shelf_->entries[pid] = {std::make_shared<const Snapshot>(std::move(*snapshot)),
                                        std::chrono::steady_clock::now()};
            } else if (isGone) {
                shelf_->entries.erase(pid);
            }
        }
        sweep_.start(oldestSnapshot, [this] { sweep(); });
    }

    /// Nobody has walked for a while: the memory is given back.
    void sweep() {
        const auto now = std::chrono::steady_clock::now();
        std::erase_if(lastRead_, [&](const auto& last) { return now - last.second > oldestSnapshot; });
        const std::lock_guard lock(shelf_->mutex);
        std::erase_if(shelf_->entries,
                      [&](const auto& entry) { return now - entry.second.taken > oldestSnapshot; });
    }

    BusThread& thread_;
    const std::shared_ptr<Shelf> shelf_;
    BusTimer sweep_;
    AccessibilityBus bus_;
    std::unique_ptr<ApplicationRegistry> registry_;  // while trusted
    std::map<std::int32_t, std::unique_ptr<ApplicationReader>>
        reads_;  // null while the connection is looked for
    std::map<std::int32_t, Moment> lastRead_;
};

AtSpiTree::AtSpiTree(BusThread& thread, std::string busAddress)
    : shelf_(std::make_shared<Shelf>()),
      worker_(std::make_unique<OnBusThread<Worker>>(
          thread, [&thread, address = std::move(busAddress), shelf = shelf_] {
              return std::make_unique<Worker>(thread, address, shelf);
          })) {}

AtSpiTree::~AtSpiTree() = default;

bool AtSpiTree::isProcessTrusted() {
    const std::lock_guard lock(shelf_->mutex);
    return shelf_->trusted;
}

std::shared_ptr<AccessibilityElement> AtSpiTree::createApplication(std::int32_t pid) {
    worker_->post([pid](Worker& worker) { worker.want(pid); });
    std::shared_ptr<const Snapshot> snapshot;
    {
        const std::lock_guard lock(shelf_->mutex);
        const auto entry = shelf_->entries.find(pid);
        if (entry != shelf_->entries.end() &&
            std::chrono::steady_clock::now() - entry->second.taken <= oldestSnapshot) {
            snapshot = entry->second.snapshot;
        }
    }
    return std::make_shared<SnapshotElement>(std::move(snapshot), 0U);
}

void AtSpiTree::enable() {
    worker_->post([](Worker& worker) { worker.enable(); });
}

}  // namespace purlock::host_linux
