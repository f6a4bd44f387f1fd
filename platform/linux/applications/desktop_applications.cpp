#include "platform/linux/applications/desktop_applications.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

#include "platform/linux/applications/launchers.h"
#include "platform/linux/applications/process_applications.h"
#include "platform/linux/applications/process_identity.h"

namespace purlock::host_linux {

namespace {

using Moment = std::chrono::steady_clock::time_point;

std::vector<RunningApplication> withoutTimes(const std::vector<StartedApplication>& instances) {
    std::vector<RunningApplication> running;
    running.reserve(instances.size());
    for (const auto& [startTime, application] : instances) running.push_back(application);
    return running;
}

}  // namespace

/// Answers are asked for again and again while something plays, and each costs several reads of /proc. So
/// they are kept for a while. No other process has the same number then: numbers of ended processes come up
/// again only after thousands of others, and what an ended process played has gone with it.
class DesktopApplications::Desk : public std::enable_shared_from_this<Desk> {
  public:
    Desk(std::shared_ptr<SerialQueue> queue, DesktopRoots roots)
        : queue_(std::move(queue)), roots_(std::move(roots)), processes_(roots_.processFolder) {}

    void readDesktopFiles() {
        onQueue([](Desk& desk) { desk.readIndex(); });
    }

    std::optional<RunningApplication> application(std::int32_t pid);
    std::vector<RunningApplication> instances(std::string_view bundleID);
    std::vector<RunningApplication> instancesNow(std::string_view bundleID);
    std::shared_ptr<const DesktopIndex> currentIndex();

  private:
    struct KeptProcess {
        std::optional<RunningApplication> application;
        std::uint64_t startTime = 0;
        Moment asked;
        std::chrono::milliseconds keptTime;

        bool isCurrent(Moment now) const { return now - asked < keptTime; }
    };
    struct KeptInstances {
        std::vector<StartedApplication> instances;
        Moment searched{};
        Moment seen{};
        bool searching = false;
    };
    enum class OwnWord { sandbox, script };
    struct KeptWord {
        std::uint64_t startTime = 0;
        std::optional<std::string> text;
        bool isKnown = false;  // not while it is being read
    };

    /// Runs `work(desk)` on the queue, unless the desk is gone by then.
    template <typename Work>
    void onQueue(Work work) {
        queue_->async([weak = weak_from_this(), work = std::move(work)] {
            if (const auto desk = weak.lock()) work(*desk);
        });
    }

    void readIndex();
    KeptWord ownWord(OwnWord word, std::int32_t pid);
    std::optional<std::string> read(OwnWord word, std::int32_t pid) const;
    void search(const std::string& bundleID);
    void keepInstances(const std::string& bundleID, std::vector<StartedApplication> found);
    std::vector<StartedApplication> stillRunning(std::vector<StartedApplication> instances) const;
    void keepApplication(std::int32_t pid, KeptProcess found);
    void forgetOld(Moment now);

    static constexpr std::size_t maximumWords = 1024;

    const std::shared_ptr<SerialQueue> queue_;
    const DesktopRoots roots_;
    const ProcessFiles processes_;

    std::mutex mutex_;  // guards what follows; never held over a read
    std::shared_ptr<const DesktopIndex> index_ = std::make_shared<DesktopIndex>();
    bool checking_ = true;  // until the first reading has ended
    Moment checked_{};
    std::map<std::pair<OwnWord, std::int32_t>, KeptWord> ownWords_;
    std::map<std::int32_t, KeptProcess> keptProcesses_;
    std::map<std::string, KeptInstances, std::less<>> keptInstances_;
};

void DesktopApplications::Desk::readIndex() {
    auto index = std::make_shared<const DesktopIndex>(
        DesktopIndex::read(roots_.dataFolders, localeSuffixes(roots_.locale)));
    const std::lock_guard lock(mutex_);
    index_ = std::move(index);
    checking_ = false;
    checked_ = roots_.now();
    keptProcesses_.clear();
    keptInstances_.clear();
}

std::shared_ptr<const DesktopIndex> DesktopApplications::Desk::currentIndex() {
    const std::lock_guard lock(mutex_);
    const auto now = roots_.now();
    if (checking_ || now - checked_ < roots_.keptIndexTime) return index_;
    checking_ = true;
    checked_ = now;
    onQueue([index = index_](Desk& desk) {
        if (index->isOutdated()) return desk.readIndex();
        const std::lock_guard deskLock(desk.mutex_);
        desk.checking_ = false;
    });
    return index_;
}

/// On the queue, or on a thread that may wait.
std::optional<std::string> DesktopApplications::Desk::read(OwnWord word, std::int32_t pid) const {
    if (word == OwnWord::script) return scriptOf(processes_.arguments(pid));
    const auto info = processes_.flatpakInfo(pid);
    return info ? applicationOfFlatpakInfo(*info) : std::nullopt;
}

DesktopApplications::Desk::KeptWord DesktopApplications::Desk::ownWord(OwnWord word, std::int32_t pid) {
    const auto status = processes_.status(pid);
    if (!status) return {0, std::nullopt, true};
    const std::uint64_t startTime = status->startTime;
    const std::lock_guard lock(mutex_);
    const auto known = ownWords_.find({word, pid});
    if (known != ownWords_.end() && known->second.startTime == startTime) return known->second;
    if (ownWords_.size() >= maximumWords) ownWords_.clear();
    ownWords_.insert_or_assign({word, pid}, KeptWord{startTime, std::nullopt, false});
    onQueue([word, pid, startTime](Desk& desk) {
        auto text = desk.read(word, pid);
        const std::lock_guard deskLock(desk.mutex_);
        desk.ownWords_.insert_or_assign({word, pid}, KeptWord{startTime, std::move(text), true});
        desk.keptProcesses_.clear();  // a process may be named by its parents
    });
    return {startTime, std::nullopt, false};
}

std::optional<RunningApplication> DesktopApplications::Desk::application(std::int32_t pid) {
    const auto index = currentIndex();
    const auto now = roots_.now();
    {
        const std::lock_guard lock(mutex_);
        forgetOld(now);
        const auto kept = keptProcesses_.find(pid);
        if (kept != keptProcesses_.end() && kept->second.isCurrent(now)) return kept->second.application;
    }
    const auto status = processes_.status(pid);
    if (!status) return std::nullopt;
    bool waitsForScript = false;
    const auto scriptOf = [&](std::int32_t other) {
        KeptWord script = ownWord(OwnWord::script, other);
        waitsForScript = waitsForScript || !script.isKnown;
        return std::move(script.text);
    };
    const auto sandboxOf = [this](std::int32_t other) { return ownWord(OwnWord::sandbox, other).text; };
    const ProcessApplications lookup(processes_, index, {sandboxOf, scriptOf});
    auto application = lookup.applicationOf(pid);
    if (waitsForScript) application.reset();  // a parent's name would be wrong in a moment
    const std::lock_guard lock(mutex_);
    // Newer desktop files that came meanwhile are used next time.
    if (index == index_) {
        keepApplication(pid, {application, status->startTime, now, roots_.keptProcessTime});
    }
    return application;
}

/// With the mutex held.
void DesktopApplications::Desk::keepApplication(std::int32_t pid, KeptProcess found) {
    const auto before = keptProcesses_.find(pid);
    if (before != keptProcesses_.end() && before->second.startTime == found.startTime &&
        before->second.application == found.application) {
        found.keptTime = std::min(before->second.keptTime * 2, DesktopRoots::longestKeptProcessTime);
    }
    keptProcesses_.insert_or_assign(pid, std::move(found));
}

std::vector<RunningApplication> DesktopApplications::Desk::instances(std::string_view bundleID) {
    currentIndex();
    const auto now = roots_.now();
    KeptInstances kept;
    {
        const std::lock_guard lock(mutex_);
        const auto found = keptInstances_.find(bundleID);
        if (found != keptInstances_.end()) kept = found->second;
    }
    const bool isTrusted = now - kept.seen < roots_.trustedInstanceTime;
    if (!isTrusted) kept.instances = stillRunning(std::move(kept.instances));
    const auto keptTime = kept.instances.empty() ? keptAbsenceTime : keptInstancesTime;
    const bool isOld = now - kept.searched >= keptTime;
    const std::lock_guard lock(mutex_);
    KeptInstances& stored = keptInstances_[std::string(bundleID)];
    if (!isTrusted && stored.searched == kept.searched) {
        stored.instances = kept.instances;
        stored.seen = now;
    }
    if (isOld && !std::exchange(stored.searching, true)) {
        onQueue([id = std::string(bundleID)](Desk& desk) { desk.search(id); });
    }
    return withoutTimes(kept.instances);
}

std::vector<StartedApplication> DesktopApplications::Desk::stillRunning(
    std::vector<StartedApplication> instances) const {
    std::erase_if(instances, [this](const auto& instance) {
        const auto status = processes_.status(instance.second.processIdentifier);
        return !status || status->startTime != instance.first;
    });
    return instances;
}

/// On the queue, or on a thread that may wait.
void DesktopApplications::Desk::search(const std::string& bundleID) {
    std::shared_ptr<const DesktopIndex> index;
    {
        const std::lock_guard lock(mutex_);
        index = index_;
    }
    const auto reading = [this](OwnWord word) {
        return [this, word](std::int32_t pid) { return read(word, pid); };
    };
    const ProcessApplications lookup(processes_, index,
                                     {reading(OwnWord::sandbox), reading(OwnWord::script)});
    keepInstances(bundleID, lookup.instancesOf(bundleID));
}

void DesktopApplications::Desk::keepInstances(const std::string& bundleID,
                                              std::vector<StartedApplication> found) {
    const auto now = roots_.now();
    const std::lock_guard lock(mutex_);
    keptInstances_.insert_or_assign(bundleID, KeptInstances{std::move(found), now, now, false});
}

std::vector<RunningApplication> DesktopApplications::Desk::instancesNow(std::string_view bundleID) {
    const std::string id(bundleID);
    {
        const std::lock_guard lock(mutex_);
        const auto kept = keptInstances_.find(bundleID);
        if (kept != keptInstances_.end() && roots_.now() - kept->second.searched < keptAbsenceTime) {
            return withoutTimes(kept->second.instances);
        }
    }
    search(id);
    const std::lock_guard lock(mutex_);
    return withoutTimes(keptInstances_[id].instances);
}

/// With the mutex held.
void DesktopApplications::Desk::forgetOld(Moment now) {
    std::erase_if(keptProcesses_, [&](const auto& each) {
        return now - each.second.asked >= 2 * DesktopRoots::longestKeptProcessTime;
    });
}

class DesktopApplications::Direct final : public RunningApplications {
  public:
    explicit Direct(std::shared_ptr<Desk> desk) : desk_(std::move(desk)) {}

    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(std::int32_t pid) override {
        return pid > 0 ? desk_->application(pid) : std::nullopt;
    }
    std::vector<RunningApplication> runningApplicationsWithBundleIdentifier(
        std::string_view bundleID) override {
        return desk_->instancesNow(bundleID);
    }

  private:
    const std::shared_ptr<Desk> desk_;
};

DesktopApplications::DesktopApplications(std::shared_ptr<SerialQueue> queue, DesktopRoots roots)
    : desk_(std::make_shared<Desk>(std::move(queue), std::move(roots))),
      direct_(std::make_unique<Direct>(desk_)) {
    desk_->readDesktopFiles();
}

DesktopApplications::~DesktopApplications() = default;

std::optional<RunningApplication> DesktopApplications::runningApplicationWithProcessIdentifier(
    std::int32_t pid) {
    return direct_->runningApplicationWithProcessIdentifier(pid);
}

std::vector<RunningApplication> DesktopApplications::runningApplicationsWithBundleIdentifier(
    std::string_view bundleID) {
    return desk_->instances(bundleID);
}

RunningApplications& DesktopApplications::searchingAtOnce() {
    return *direct_;
}

std::optional<std::string> DesktopApplications::nameOfDesktopFile(std::string_view id) {
    const auto index = desk_->currentIndex();
    const DesktopEntry* entry = index->find(id);
    return entry != nullptr && entry->isApplication && !entry->isNotShown ? entry->name : std::nullopt;
}

}  // namespace purlock::host_linux
