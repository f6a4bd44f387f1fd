#include "platform/linux/pipewire/hardware/hardware_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "platform/linux/pipewire/hardware/answer_builder.h"
#include "platform/linux/pipewire/rules/transport_rule.h"

namespace purlock::host_linux {

namespace {

// After a device was opened: first soon, for programs that set up at once, then at growing distances.
constexpr std::chrono::milliseconds firstLook{40};
constexpr int looksAfterOpening = 4;

}  // namespace

HardwareWatch::HardwareWatch(pw_loop* loop, SoundCards cards, std::string soundDevices,
                             std::function<void()> changed)
    : loop_(loop),
      cards_(std::move(cards)),
      soundDevices_(std::move(soundDevices)),
      changed_(std::move(changed)),
      volumes_(soundDevices_),
      later_(loop, [this] { lookAndTell(); }) {}

void HardwareWatch::follow(const AudioGraph& graph) {
    HardwareSight followed;
    displays_.clear();
    for (const auto& [serial, node] : graph.nodes) {
        const NodeProperties& properties = node.properties;
        const bool hasOutput = properties.role == NodeRole::sink || properties.role == NodeRole::duplex;
        if (!hasOutput || !properties.pcm) continue;
        followed.pcms[*properties.pcm];
        if (properties.hasLibraryVolume) followed.libraryVolumes[properties.pcm->card] = 1;
        if (isDisplayOutput(properties)) {
            displays_[*properties.pcm] = properties.description + "\n" + properties.nick;
        }
    }
    sight_ = std::move(followed);
    readVolumes();
    look();
    if (sight_.pcms.empty()) {
        later_.disarm();
        stopWatching();
    } else {
        watchDevices();
    }
}

/// Somebody who turns one of them makes the server tell of the device's volume, and so changes the mirror.
void HardwareWatch::readVolumes() {
    volumes_.keepOnly([this](std::uint32_t card) { return sight_.libraryVolumes.contains(card); });
    for (auto& [card, factor] : sight_.libraryVolumes) factor = volumes_.of(card).value_or(1);
}

bool HardwareWatch::look() {
    const HardwareSight before = sight_;
    for (auto& [address, view] : sight_.pcms) view = cards_.pcm(address);
    for (const auto& [address, description] : displays_) {
        sight_.displays[address] = cards_.displayConnection(address, description);
    }
    return sight_ != before;
}

bool HardwareWatch::isAnyTaken() const {
    return std::any_of(sight_.pcms.begin(), sight_.pcms.end(),
                       [](const auto& each) { return isTakenByAnother(each.second); });
}

void HardwareWatch::watchDevices() {
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

void HardwareWatch::stopWatching() {
    reader_.reset();
    descriptor_ = FileDescriptor();
}

void HardwareWatch::opened() {
    alignas(inotify_event) char buffer[4096];
    while (::read(descriptor_.get(), buffer, sizeof buffer) > 0) {
    }
    looksLeft_ = looksAfterOpening;
    later_.arm(firstLook);
}

void HardwareWatch::lookAndTell() {
    if (--looksLeft_ > 0) later_.arm(firstLook * (1 << (2 * (looksAfterOpening - looksLeft_) - 1)));
    if (look()) changed_();
}

}  // namespace purlock::host_linux
