#include "platform/linux/pipewire/hardware/card_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "platform/linux/pipewire/rules/card_facts.h"
#include "platform/linux/pipewire/rules/transport_rule.h"

namespace purlock::host_linux {

namespace {

// After a device was opened: first soon, for programs that set up at once, then at growing distances.
constexpr std::chrono::milliseconds firstRead{40};
constexpr int readsAfterOpening = 4;

}  // namespace

CardWatch::CardWatch(pw_loop* loop, SoundCards cards, std::string soundDevices, std::function<void()> changed)
    : loop_(loop),
      cards_(std::move(cards)),
      soundDevices_(std::move(soundDevices)),
      changed_(std::move(changed)),
      volumes_(soundDevices_),
      later_(loop, [this] { readAgain(); }) {}

void CardWatch::follow(const AudioGraph& graph) {
    CardFacts followed;
    displays_.clear();
    for (const auto& [serial, node] : graph.nodes) {
        const NodeProperties& properties = node.properties;
        if (!properties.isSink() || !properties.pcm) continue;
        followed.pcms[*properties.pcm];
        if (properties.hasLibraryVolume) followed.libraryVolumes[properties.pcm->card] = 1;
        if (isDisplayOutput(properties)) {
            displays_[*properties.pcm] = properties.description + "\n" + properties.nick;
        }
    }
    facts_ = std::move(followed);
    readVolumes();
    read();
    if (facts_.pcms.empty()) {
        later_.disarm();
        stopWatching();
    } else {
        watchDevices();
    }
}

/// A change of one of these volumes has the server tell the device's volume, and so changes the mirror.
void CardWatch::readVolumes() {
    volumes_.keepOnly([this](std::uint32_t card) { return facts_.libraryVolumes.contains(card); });
    for (auto& [card, factor] : facts_.libraryVolumes) factor = volumes_.of(card).value_or(1);
}

bool CardWatch::read() {
    const CardFacts before = facts_;
    for (auto& [address, view] : facts_.pcms) view = cards_.pcm(address);
    for (const auto& [address, description] : displays_) {
        facts_.displays[address] = cards_.displayConnection(address, description);
    }
    return facts_ != before;
}

bool CardWatch::isAnyTaken() const {
    return std::ranges::any_of(facts_.pcms, [](const auto& each) { return isTakenByAnother(each.second); });
}

void CardWatch::watchDevices() {
    if (descriptor_) return;
    descriptor_ = FileDescriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!descriptor_) return;
    constexpr std::uint32_t events = IN_OPEN | IN_CLOSE | IN_ONLYDIR;
    if (::inotify_add_watch(descriptor_.get(), soundDevices_.c_str(), events) < 0) {
        stopWatching();
        return;
    }
    reader_ = std::make_unique<LoopReader>(loop_, descriptor_.get(), [this] { opened(); });
}

void CardWatch::stopWatching() {
    reader_.reset();
    descriptor_ = FileDescriptor();
}

void CardWatch::opened() {
    alignas(inotify_event) char buffer[4096];
    while (::read(descriptor_.get(), buffer, sizeof buffer) > 0) {
    }
    readsLeft_ = readsAfterOpening;
    later_.arm(firstRead);
}

void CardWatch::readAgain() {
    if (--readsLeft_ > 0) later_.arm(firstRead * (1 << (2 * (readsAfterOpening - readsLeft_) - 1)));
    if (read()) changed_();
}

}  // namespace purlock::host_linux
