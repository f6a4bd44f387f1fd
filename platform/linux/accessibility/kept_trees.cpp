#include "platform/linux/accessibility/kept_trees.h"

#include <algorithm>
#include <utility>

namespace purlock::host_linux {

namespace {

constexpr std::size_t maximumTrees = 16;

}  // namespace

/// The place where the last walk ended: at a text that matched, or nowhere.
void KeptTrees::learn(Tree& tree, Moment now) const {
    if (!tree.snapshot || !tree.record || !tree.record->isUsed) return;
    const WalkRecord record = *tree.record;
    tree.record = std::make_shared<WalkRecord>();
    tree.found = foundElement(*tree.snapshot, record);
    if (tree.found) {
        tree.isExhausted = false;
        if (tree.snapshot->nodes[record.node].children.empty() && tree.snapshot->nodes.size() <= 16) return;
        tree.snapshot = std::make_shared<const Snapshot>(pathTo(*tree.snapshot, record.node));
    } else {
        tree.isExhausted = true;
        tree.snapshot.reset();
        scheduleExhausted(tree, now);
    }
}

KeptTrees::Answer KeptTrees::answer(std::int32_t pid, Moment now) {
    if (!trees_.contains(pid) && trees_.size() >= maximumTrees) return {};
    Tree& tree = trees_[pid];
    tree.asked = now;
    learn(tree, now);
    tree.record = std::make_shared<WalkRecord>();
    return {tree.snapshot, tree.record};
}

std::optional<KeptTrees::Question> KeptTrees::due(std::int32_t pid, Moment now) {
    const auto entry = trees_.find(pid);
    if (entry == trees_.end() || entry->second.isBeingRead || now < entry->second.due) return std::nullopt;
    entry->second.isBeingRead = true;
    entry->second.changed.reset();
    entry->second.isDueAgain = false;
    return Question{entry->second.found};
}

void KeptTrees::schedule(Tree& tree, Moment now) const {
    tree.isBeingRead = false;
    if (std::exchange(tree.isDueAgain, false)) return restart(tree, now);
    tree.due = now + (tree.step < pace_.follow.size() ? pace_.follow[tree.step] : pace_.steady);
    ++tree.step;
}

/// After the one read at once that an application gets of which nothing is known yet, or whose badge has
/// gone, one more once its window has settled.
void KeptTrees::scheduleExhausted(Tree& tree, Moment now) const {
    const bool isSettled = tree.step > 1;
    tree.pause = isSettled ? std::clamp(2 * tree.pause, pace_.absent, pace_.longest) : pace_.settling;
    tree.due = now + tree.pause;
}

void KeptTrees::restart(Tree& tree, Moment now) const {
    tree.failures = 0;
    if (!tree.isExhausted) {
        tree.step = 0;
        tree.due = now;
        return;
    }
    constexpr int longestSettling = 3;
    tree.step = 1;
    tree.pause = pace_.settling;
    tree.changed = tree.changed.value_or(now);
    tree.due = std::min(now + pace_.settling, *tree.changed + longestSettling * pace_.settling);
}

void KeptTrees::take(std::int32_t pid, std::optional<Snapshot> snapshot, Moment now) {
    const auto entry = trees_.find(pid);
    if (entry == trees_.end()) return;
    Tree& tree = entry->second;
    tree.found.reset();
    tree.record = std::make_shared<WalkRecord>();
    if (snapshot) {
        tree.snapshot = std::make_shared<const Snapshot>(std::move(*snapshot));
        tree.failures = 0;
        return schedule(tree, now);
    }
    tree.snapshot.reset();
    schedule(tree, now);
    const auto pause = pace_.retry * (1 << std::min(tree.failures++, 10));
    tree.due = now + std::min(pause, pace_.steady);
}

void KeptTrees::confirm(std::int32_t pid, Moment now) {
    const auto entry = trees_.find(pid);
    if (entry != trees_.end()) schedule(entry->second, now);
}

void KeptTrees::noteChange(Moment now) {
    for (auto& [pid, tree] : trees_) {
        restart(tree, now);
        tree.isDueAgain = tree.isBeingRead;
    }
}

void KeptTrees::noteWindow(std::int32_t pid, Moment now) {
    const auto entry = trees_.find(pid);
    if (entry == trees_.end() || now - entry->second.windowNoted < pace_.windows) return;
    entry->second.windowNoted = now;
    restart(entry->second, now);
    entry->second.isDueAgain = entry->second.isBeingRead;
}

bool KeptTrees::sweep(Moment now) {
    std::erase_if(trees_, [&](const auto& entry) { return now - entry.second.asked > pace_.forgotten; });
    return !trees_.empty();
}

}  // namespace purlock::host_linux
