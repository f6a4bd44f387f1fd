#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "base/cancellable.h"
#include "base/scope_exit.h"

namespace purlock {

/// A value that others can watch. A new subscriber gets the current value at once, then every later one,
/// equal or not.
///
/// Belongs to one thread (in this program the main thread), which alone sets, reads and subscribes; only the
/// handles that `subscribe` returns may be dropped elsewhere. During a delivery an observer may set the value
/// again, subscribe, drop any handle that it has (its own, too) or destroy the publisher: each remaining
/// subscriber still sees every value once, in the order in which they were set. An exception that an observer
/// throws leaves `set` or `subscribe`; the other subscribers see the value before the next one. An owner that
/// hands out a const reference lets others watch and read only.
template <typename T>
class Published {
  public:
    using Observer = std::function<void(const T&)>;

    explicit Published(T initial = T{}) { state_->current = std::make_shared<const T>(std::move(initial)); }
    ~Published() { state_->ended = true; }
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;
    Published(Published&&) = delete;
    Published& operator=(Published&&) = delete;

    /// The value last set. The reference is good until the next `set`.
    const T& value() const { return *state_->current; }

    void set(T value) {
        auto state = state_;
        state->current = std::make_shared<const T>(std::move(value));
        ++state->version;
        if (state->subscribers.empty()) return;
        state->pending.push_back({state->version, state->current});
        deliverPending(state);
    }

    Cancellable subscribe(Observer observer) const {
        const auto state = state_;
        auto subscriber = std::make_shared<Subscriber>(Subscriber{std::move(observer), state->version});
        state->subscribers.push_back(subscriber);
        handOut(*state, *subscriber);
        deliverPending(state);
        return Cancellable(std::move(subscriber));
    }

  private:
    struct Subscriber {
        Observer observer;
        std::uint64_t seen;  // the version last handed to this subscriber
    };
    struct Change {
        std::uint64_t version;
        std::shared_ptr<const T> value;
    };
    struct State {
        std::shared_ptr<const T> current;
        std::uint64_t version = 0;
        // Weak, so that a dropped handle ends the subscription on whatever thread it is dropped.
        std::vector<std::weak_ptr<Subscriber>> subscribers;
        std::deque<Change> pending;
        bool delivering = false;
        bool ended = false;
    };

    /// A delivery like any other, so that a value set from within it comes after it.
    static void handOut(State& state, const Subscriber& subscriber) {
        const bool nested = std::exchange(state.delivering, true);
        const ScopeExit end([&] { state.delivering = nested; });
        const auto current = state.current;
        subscriber.observer(*current);
    }

    static void deliverPending(const std::shared_ptr<State>& state) {
        if (state->delivering) return;
        state->delivering = true;
        const ScopeExit end([&] { state->delivering = false; });
        while (!state->ended && !state->pending.empty()) {
            const Change change = state->pending.front();
            deliver(*state, change);
            state->pending.pop_front();  // not before everyone has seen it
        }
        std::erase_if(state->subscribers, [](const auto& subscriber) { return subscriber.expired(); });
    }

    static void deliver(State& state, const Change& change) {
        // By index: an observer may subscribe, which moves the vector.
        for (std::size_t i = 0; i < state.subscribers.size() && !state.ended; ++i) {
            const auto subscriber = state.subscribers[i].lock();
            if (!subscriber || subscriber->seen >= change.version) continue;
            subscriber->seen = change.version;
            subscriber->observer(*change.value);
        }
    }

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// An event without a value: tells its subscribers that something is about to change or has happened.
///
/// The same thread and life rules as `Published`; nothing is handed out on subscription.
class Signal {
  public:
    using Observer = std::function<void()>;

    Signal() = default;
    ~Signal() { state_->ended = true; }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;
    Signal(Signal&&) = delete;
    Signal& operator=(Signal&&) = delete;

    /// For its owner. One that subscribes meanwhile waits for the next event.
    void fire() {
        const auto state = state_;
        const std::size_t count = state->observers.size();
        ++state->depth;
        const ScopeExit end([&] {
            --state->depth;
            forgetDropped(*state);
        });
        for (std::size_t i = 0; i < count && !state->ended; ++i) {
            if (const auto observer = state->observers[i].lock()) (*observer)();
        }
    }

    Cancellable subscribe(Observer observer) const {
        auto kept = std::make_shared<Observer>(std::move(observer));
        forgetDropped(*state_);
        state_->observers.push_back(kept);
        return Cancellable(std::move(kept));
    }

    /// True while somebody holds a handle of `subscribe`.
    bool isObserved() const {
        return std::ranges::any_of(state_->observers, [](const auto& each) { return !each.expired(); });
    }

  private:
    struct State {
        std::vector<std::weak_ptr<Observer>> observers;
        int depth = 0;
        bool ended = false;
    };

    /// Not while an event goes through the list.
    static void forgetDropped(State& state) {
        if (state.depth > 0) return;
        std::erase_if(state.observers, [](const auto& observer) { return observer.expired(); });
    }

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace purlock
