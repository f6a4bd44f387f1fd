#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "base/cancellable.h"

namespace purlock {

/// A value that others can watch. A new subscriber gets the current value at once, then every later one,
/// equal or not.
///
/// Belongs to one thread (in this program the main thread), which alone sets, reads and subscribes; only the
/// handles that `subscribe` returns may be dropped elsewhere. During a delivery an observer may set the value
/// again, subscribe, drop any handle (its own too) or destroy the publisher: each remaining subscriber still
/// sees every value once, in the order in which they were set. An owner that hands out a const reference lets
/// others watch and read only.
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
        // The hand-out is a delivery like any other, so that a value set from within it comes after it.
        const bool nested = std::exchange(state->delivering, true);
        const auto current = state->current;
        subscriber->observer(*current);
        state->delivering = nested;
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

    static void deliverPending(const std::shared_ptr<State>& state) {
        if (state->delivering) return;
        state->delivering = true;
        while (!state->ended && !state->pending.empty()) {
            const Change change = std::move(state->pending.front());
            state->pending.pop_front();
            deliver(*state, change);
        }
        std::erase_if(state->subscribers, [](const auto& subscriber) { return subscriber.expired(); });
        state->delivering = false;
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

    void fire() const {
        const auto state = state_;
        const std::size_t count =
            state->observers.size();  // one that subscribes meanwhile waits for the next event
        ++state->depth;
        for (std::size_t i = 0; i < count && !state->ended; ++i) {
            if (const auto observer = state->observers[i].lock()) (*observer)();
        }
        if (--state->depth == 0) {
            std::erase_if(state->observers, [](const auto& observer) { return observer.expired(); });
        }
    }

    Cancellable subscribe(Observer observer) const {
        auto kept = std::make_shared<Observer>(std::move(observer));
        state_->observers.push_back(kept);
        return Cancellable(std::move(kept));
    }

  private:
    struct State {
        std::vector<std::weak_ptr<Observer>> observers;
        int depth = 0;
        bool ended = false;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace purlock
