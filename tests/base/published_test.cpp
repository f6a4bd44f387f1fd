#include "base/published.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace purlock {
namespace {

using Values = std::vector<int>;

TEST(Published, HandsOutTheCurrentValueAndEveryLaterOneEqualOrNot) {
    Published<int> number(1);
    Values seen;
    const Cancellable kept = number.subscribe([&](int value) { seen.push_back(value); });
    number.set(2);
    number.set(2);
    EXPECT_EQ(seen, (Values{1, 2, 2}));
    EXPECT_EQ(number.value(), 2);
}

TEST(Published, ADroppedHandleEndsTheSubscription) {
    Published<int> number(1);
    Values seen;
    Cancellable kept = number.subscribe([&](int value) { seen.push_back(value); });
    kept.cancel();
    number.set(2);
    EXPECT_EQ(seen, Values{1});
}

TEST(Published, AnObserverMayDropItsOwnHandle) {
    Published<int> number(1);
    Values seen;
    Cancellable kept;
    auto witness = std::make_shared<int>(7);
    kept = number.subscribe([&, witness](int value) {
        if (value == 2) kept.cancel();
        seen.push_back(value + *witness);  // the closure is still alive here
    });
    number.set(2);
    number.set(3);
    EXPECT_EQ(seen, (Values{8, 9}));
    EXPECT_EQ(witness.use_count(), 1);
}

TEST(Published, AnObserverMayDropALaterOne) {
    Published<int> number(1);
    Values seen;
    Cancellable later;
    const Cancellable first = number.subscribe([&](int value) {
        if (value == 2) later.cancel();
    });
    later = number.subscribe([&](int value) { seen.push_back(value); });
    number.set(2);
    EXPECT_EQ(seen, Values{1});
}

TEST(Published, AValueSetDuringADeliveryReachesEveryoneOnceAndInOrder) {
    Published<int> number(0);
    Values before;
    Values after;
    const Cancellable first = number.subscribe([&](int value) {
        before.push_back(value);
        if (value == 1) number.set(2);
    });
    const Cancellable second = number.subscribe([&](int value) { after.push_back(value); });
    number.set(1);
    EXPECT_EQ(before, (Values{0, 1, 2}));
    EXPECT_EQ(after, (Values{0, 1, 2}));
}

TEST(Published, AValueSetWhileTheCurrentOneIsHandedOutComesAfterIt) {
    Published<int> number(1);
    std::vector<std::string> events;
    const Cancellable kept = number.subscribe([&](int value) {
        events.push_back("begin " + std::to_string(value));
        if (value == 1) number.set(2);
        events.push_back("end " + std::to_string(value));
    });
    EXPECT_EQ(events, (std::vector<std::string>{"begin 1", "end 1", "begin 2", "end 2"}));
}

TEST(Published, ASubscriberAddedDuringADeliverySeesTheNewestValueOnce) {
    Published<int> number(0);
    Values seen;
    Cancellable inner;
    const Cancellable outer = number.subscribe([&](int value) {
        if (value == 1) inner = number.subscribe([&](int late) { seen.push_back(late); });
    });
    number.set(1);
    number.set(2);
    EXPECT_EQ(seen, (Values{1, 2}));
}

TEST(Published, ManySubscribersMayJoinDuringOneDelivery) {
    Published<int> number(0);
    std::vector<Cancellable> kept;
    int late = 0;
    kept.push_back(number.subscribe([&](int value) {
        if (value != 1) return;
        for (int i = 0; i < 100; ++i) kept.push_back(number.subscribe([&](int) { ++late; }));
    }));
    number.set(1);
    EXPECT_EQ(late, 100);
    number.set(2);
    EXPECT_EQ(late, 200);
}

TEST(Published, AnObserverMayDestroyThePublisher) {
    auto number = std::make_unique<Published<int>>(0);
    Values seen;
    const Cancellable first = number->subscribe([&](int value) {
        if (value == 1) number.reset();
    });
    const Cancellable second = number->subscribe([&](int value) { seen.push_back(value); });
    number->set(1);
    EXPECT_EQ(number, nullptr);
    EXPECT_EQ(seen, Values{0});
}

TEST(Published, AHandleMayOutliveThePublisher) {
    std::optional<Published<int>> number(std::in_place, 1);
    Cancellable kept = number->subscribe([](int) {});
    number.reset();
    kept.cancel();
    EXPECT_FALSE(kept);
}

TEST(Published, AReplacedHandleEndsTheOldSubscription) {
    Published<int> number(1);
    Values first;
    Values second;
    Cancellable kept = number.subscribe([&](int value) { first.push_back(value); });
    kept = number.subscribe([&](int value) { second.push_back(value); });
    number.set(2);
    EXPECT_EQ(first, Values{1});
    EXPECT_EQ(second, (Values{1, 2}));
}

struct Refusal {};

TEST(Published, AnObserverThatThrowsKeepsNothingFromTheOthers) {
    Published<int> number(0);
    Values early;
    Values late;
    const Cancellable first = number.subscribe([&](int value) { early.push_back(value); });
    const Cancellable throwing = number.subscribe([](int value) {
        if (value == 1) throw Refusal();
    });
    const Cancellable last = number.subscribe([&](int value) { late.push_back(value); });
    EXPECT_THROW(number.set(1), Refusal);
    number.set(2);
    EXPECT_EQ(early, (Values{0, 1, 2}));
    EXPECT_EQ(late, (Values{0, 1, 2})) << "what it had not seen it sees first";
}

TEST(Published, AnObserverThatThrowsAtOnceIsNoSubscriber) {
    Published<int> number(0);
    Values seen;
    const Cancellable kept = number.subscribe([&](int value) { seen.push_back(value); });
    EXPECT_THROW(static_cast<void>(number.subscribe([](int) { throw Refusal(); })), Refusal);
    number.set(1);
    EXPECT_EQ(seen, (Values{0, 1}));
}

TEST(Signal, TellsEverySubscriberOfEveryEvent) {
    Signal signal;
    int count = 0;
    const Cancellable kept = signal.subscribe([&] { ++count; });
    EXPECT_EQ(count, 0);
    signal.fire();
    signal.fire();
    EXPECT_EQ(count, 2);
}

TEST(Signal, SurvivesDroppingSubscribingAndFiringFromAnObserver) {
    Signal signal;
    int early = 0;
    int late = 0;
    Cancellable second;
    Cancellable third;
    const Cancellable first = signal.subscribe([&] {
        if (++early > 1) return;
        second.cancel();
        third = signal.subscribe([&] { ++late; });
        signal.fire();
    });
    second = signal.subscribe([&] { FAIL() << "was dropped before its turn"; });
    signal.fire();
    EXPECT_EQ(early, 2);
    EXPECT_EQ(late, 1);
}

TEST(Signal, AnObserverMayDestroyTheSignal) {
    auto signal = std::make_unique<Signal>();
    const Cancellable first = signal->subscribe([&] { signal.reset(); });
    const Cancellable second = signal->subscribe([] { FAIL() << "its signal is gone"; });
    signal->fire();
    EXPECT_EQ(signal, nullptr);
}

TEST(Signal, IsObservedWhileSomebodyHoldsAHandle) {
    const Signal signal;
    EXPECT_FALSE(signal.isObserved());
    Cancellable first = signal.subscribe([] {});
    Cancellable second = signal.subscribe([] {});
    first.cancel();
    EXPECT_TRUE(signal.isObserved());
    second.cancel();
    EXPECT_FALSE(signal.isObserved());
}

template <typename S>
concept MayFire = requires(S& signal) {
    signal.fire();
};

TEST(Signal, WhoOnlyWatchesCannotFire) {
    static_assert(MayFire<Signal>);
    static_assert(!MayFire<const Signal>);
}

TEST(Signal, AnObserverThatThrowsKeepsNoLaterEventFromTheOthers) {
    Signal signal;
    int count = 0;
    Cancellable throwing = signal.subscribe([] { throw Refusal(); });
    const Cancellable kept = signal.subscribe([&] { ++count; });
    EXPECT_THROW(signal.fire(), Refusal);
    throwing.cancel();
    signal.fire();
    EXPECT_EQ(count, 1);
}

}  // namespace
}  // namespace purlock
