#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "platform/linux/accessibility/snapshot.h"

namespace purlock::host_linux {

/// When an application's tree is read anew. Tests have it go faster.
struct ReadingPace {
    /// After the track, the state of the player or the window has changed: at once, then after these, since a
    /// window may be slow to show what has changed; then `steady` apart.
    std::array<std::chrono::milliseconds, 2> follow{std::chrono::milliseconds(1500),
                                                    std::chrono::milliseconds(4000)};
    std::chrono::milliseconds steady{15'000};

    /// A whole tree costs far more than the one element in which something was found. So where nothing was, a
    /// change is followed by one read, this long after it (three times as long while changes go on), and then
    /// by reads `absent` apart, each pause twice as long as the one before, up to `longest`.
    std::chrono::milliseconds settling{4000};
    std::chrono::milliseconds absent{30'000};
    std::chrono::milliseconds longest{60'000};

    /// After a read that failed, as of an application that has only just started; doubled each time up to
    /// `steady`.
    std::chrono::milliseconds retry{1000};

    /// Windows that come and go count once in this time.
    std::chrono::milliseconds windows{5000};

    /// A tree that nobody has asked for in this time is forgotten.
    std::chrono::milliseconds forgotten{90'000};
};

/// The trees of applications as they were last read, and when each is to be read again. Pure bookkeeping
/// without threads or a clock of its own; its owner guards it.
class KeptTrees {
  public:
    using Moment = std::chrono::steady_clock::time_point;

    explicit KeptTrees(const ReadingPace& pace) : pace_(pace) {}

    /// The answer to a walk over the application.
    struct Answer {
        std::shared_ptr<const Snapshot> snapshot;  // null while nothing is known, or nothing found
        std::shared_ptr<WalkRecord> record;
    };

    /// A tree that is to be read.
    struct Question {
        std::optional<FoundElement> found;  // to be asked before the tree
    };

    /// Takes note of where the walk before this one ended, so that the tree shrinks to what it found.
    Answer answer(std::int32_t pid, Moment now);

    /// True if the application is to be read now; then it counts as being read.
    std::optional<Question> due(std::int32_t pid, Moment now);

    /// The tree that was read; absent when the read failed, and nothing is known then.
    void take(std::int32_t pid, std::optional<Snapshot> snapshot, Moment now);

    /// The element in which something was found is as it was.
    void confirm(std::int32_t pid, Moment now);

    /// The track, the player's state, or the application has changed: every tree is due.
    void noteChange(Moment now);

    /// A window of that application has.
    void noteWindow(std::int32_t pid, Moment now);

    void forget(std::int32_t pid) { trees_.erase(pid); }
    void clear() { trees_.clear(); }

    /// Forgets what nobody asks for; whether something is left.
    bool sweep(Moment now);

  private:
    struct Tree {
        std::shared_ptr<const Snapshot> snapshot;
        std::shared_ptr<WalkRecord> record;
        std::optional<FoundElement> found;
        bool isExhausted = false;  // a walk over all of it found nothing
        bool isBeingRead = false;
        bool isDueAgain = false;  // something has changed during the read
        std::size_t step = 0;     // reads since the last change
        int failures = 0;
        std::chrono::milliseconds pause{0};  // while exhausted
        std::optional<Moment> changed{};     // the first change since the last read
        Moment due{};
        Moment asked{};
        Moment windowNoted{};
    };

    void learn(Tree& tree, Moment now) const;
    void schedule(Tree& tree, Moment now) const;
    void scheduleExhausted(Tree& tree, Moment now) const;
    void restart(Tree& tree, Moment now) const;

    const ReadingPace pace_;
    std::map<std::int32_t, Tree> trees_;
};

}  // namespace purlock::host_linux
