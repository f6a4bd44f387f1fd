#include "platform/linux/accessibility/atspi_tree.h"

#include <malloc.h>

#include <map>
#include <mutex>
#include <utility>

#include "base/text.h"
#include "platform/linux/accessibility/accessibility_bus.h"
#include "platform/linux/accessibility/application_reader.h"
#include "platform/linux/accessibility/application_registry.h"
#include "platform/linux/accessibility/element_probe.h"
#include "platform/linux/accessibility/snapshot_element.h"

namespace purlock::host_linux {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds pauseBetweenSweeps{30};

}  // namespace

/// The bus thread fills it and the main thread reads it.
struct AtSpiTree::Shared {
    explicit Shared(const ReadingPace& pace) : trees(pace) {}

    std::mutex mutex;
    bool trusted = false;  // guarded by mutex
    KeptTrees trees;       // guarded by mutex
};

/// Reads applications when they are asked for; on the bus thread.
class AtSpiTree::Reader {
  public:
    Reader(BusThread& thread, const std::string& busAddress, std::shared_ptr<Shared> shared)
        : thread_(thread),
          shared_(std::move(shared)),
          sweep_(thread),
          trim_(thread),
          bus_(thread, busAddress, [this](bool usable) { changeTrust(usable); }) {}
    ~Reader() { changeTrust(false); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    void want(std::int32_t pid, std::optional<FoundElement> found) {
        if (!registry_ || (!reads_.contains(pid) && reads_.size() >= maximumReads)) {
            return finish(pid, std::nullopt);
        }
        Application& read = reads_[pid];
        read.found = std::move(found);
        if (!read.busName.empty()) return begin(pid);
        registry_->find(pid, [this, pid](const std::optional<std::string>& busName) {
            if (!busName) return finish(pid, std::nullopt);
            follow(pid, *busName);
            begin(pid);
        });
    }

    void enable() { bus_.enable(); }

  private:
    static constexpr std::size_t maximumReads = 16;

    /// An application that was found on the bus, and what is being asked of it.
    struct Application {
        std::string busName;
        std::optional<FoundElement> found;
        std::unique_ptr<ElementProbe> probe;
        std::unique_ptr<ApplicationReader> reader;
        BusSlot leaving;
        BusSlot windows;
    };

    void changeTrust(bool trusted) {
        reads_.clear();
        registry_.reset();
        if (trusted) registry_ = std::make_unique<ApplicationRegistry>(bus_.connection());
        const std::lock_guard lock(shared_->mutex);
        shared_->trusted = trusted;
        shared_->trees.clear();
    }

    void follow(std::int32_t pid, const std::string& busName) {
        Application& application = reads_[pid];
        application.busName = busName;
        application.leaving = bus_.connection().addMatch(
            joined({"type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='", busName,
                    "'"}),
            [this, pid](const BusIncoming&) { finish(pid, std::nullopt); });
        application.windows = bus_.connection().addMatch(
            joined({"type='signal',sender='", busName, "',interface='org.a11y.atspi.Event.Window'"}),
            [this, pid](const BusIncoming&) {
                const std::lock_guard lock(shared_->mutex);
                shared_->trees.noteWindow(pid, Clock::now());
            });
    }

    void begin(std::int32_t pid) {
        Application& application = reads_[pid];
        if (!application.found) return readTree(pid);
        application.probe = std::make_unique<ElementProbe>(bus_.connection(), application.busName,
                                                           *std::exchange(application.found, {}),
                                                           [this, pid](bool isUnchanged) {
                                                               if (!isUnchanged) return readTree(pid);
                                                               const std::lock_guard lock(shared_->mutex);
                                                               shared_->trees.confirm(pid, Clock::now());
                                                           });
    }

    void readTree(std::int32_t pid) {
        Application& application = reads_[pid];
        application.reader = std::make_unique<ApplicationReader>(
            thread_, bus_.connection(), application.busName,
            [this, pid](std::optional<Snapshot> snapshot) { finish(pid, std::move(snapshot)); });
    }

    /// An application that did not answer, or is gone, is looked for anew.
    void finish(std::int32_t pid, std::optional<Snapshot> snapshot) {
        if (snapshot) {
            reads_[pid].reader.reset();
        } else {
            reads_.erase(pid);
        }
        {
            const std::lock_guard lock(shared_->mutex);
            shared_->trees.take(pid, std::move(snapshot), Clock::now());
        }
        // Once the walk over it has shrunk the tree.
        trim_.start(std::chrono::milliseconds(2000), [] { malloc_trim(0); });
        if (!sweep_.running()) sweep_.start(pauseBetweenSweeps, [this] { sweep(); });
    }

    void sweep() {
        const std::lock_guard lock(shared_->mutex);
        if (shared_->trees.sweep(Clock::now())) return sweep_.start(pauseBetweenSweeps, [this] { sweep(); });
        reads_.clear();
    }

    BusThread& thread_;
    const std::shared_ptr<Shared> shared_;
    BusTimer sweep_;
    BusTimer trim_;
    AccessibilityBus bus_;
    std::unique_ptr<ApplicationRegistry> registry_;  // while trusted
    std::map<std::int32_t, Application> reads_;
};

AtSpiTree::AtSpiTree(BusThread& thread, std::string busAddress, std::function<bool()> soundRuns,
                     const ReadingPace& pace)
    : soundRuns_(std::move(soundRuns)),
      shared_(std::make_shared<Shared>(pace)),
      reader_(std::make_unique<OnBusThread<Reader>>(
          thread, [&thread, address = std::move(busAddress), shared = shared_] {
              return std::make_unique<Reader>(thread, address, shared);
          })) {}

AtSpiTree::~AtSpiTree() = default;

bool AtSpiTree::isProcessTrusted() {
    const std::lock_guard lock(shared_->mutex);
    return shared_->trusted;
}

std::shared_ptr<AccessibilityElement> AtSpiTree::createApplication(std::int32_t pid) {
    const auto now = Clock::now();
    const bool mayRead = !soundRuns_ || soundRuns_();
    KeptTrees::Answer answer;
    std::optional<KeptTrees::Question> question;
    {
        const std::lock_guard lock(shared_->mutex);
        if (shared_->trusted) {
            answer = shared_->trees.answer(pid, now);
            if (mayRead) question = shared_->trees.due(pid, now);
        }
    }
    if (question) {
        reader_->post([pid, found = std::move(question->found)](Reader& reader) { reader.want(pid, found); });
    }
    if (!answer.record) answer.record = std::make_shared<WalkRecord>();
    return std::make_shared<SnapshotElement>(std::move(answer.snapshot), 0U, std::move(answer.record));
}

void AtSpiTree::noteChange() {
    const std::lock_guard lock(shared_->mutex);
    shared_->trees.noteChange(Clock::now());
}

void AtSpiTree::enable() {
    reader_->post([](Reader& reader) { reader.enable(); });
}

}  // namespace purlock::host_linux
