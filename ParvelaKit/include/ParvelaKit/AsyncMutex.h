#pragma once

#include <ParvelaKit/Task.h>

#include <deque>
#include <memory>
#include <utility>

namespace parvela {

/// Lets one coroutine at a time through a section that suspends, in the order in which they came. Single-threaded;
/// copies share the mutex.
///
///     auto waiting = mutex.lock();
///     const auto guard = co_await waiting;
class AsyncMutex {
    struct State {
        bool locked = false;
        std::deque<Deferred<bool>> waiting;
    };

public:
    /// Holds the mutex until it goes.
    class Guard {
    public:
        explicit Guard(std::shared_ptr<State> state) : state_(std::move(state)) {}
        Guard(Guard&&) noexcept = default;
        Guard& operator=(Guard&&) = delete;
        ~Guard() {
            if (!state_) return;
            if (state_->waiting.empty()) {
                state_->locked = false;
                return;
            }
            const auto next = std::move(state_->waiting.front());
            state_->waiting.pop_front();
            next.resolve(true);
        }

    private:
        std::shared_ptr<State> state_;
    };

    AsyncMutex() : state_(std::make_shared<State>()) {}

    [[nodiscard]] Task<Guard> lock() const { return acquire(state_); }

private:
    static Task<Guard> acquire(std::shared_ptr<State> state) {
        if (state->locked) {
            const Deferred<bool> turn;
            state->waiting.push_back(turn);
            co_await turn;
        }
        state->locked = true;
        co_return Guard(std::move(state));
    }

    std::shared_ptr<State> state_;
};

}  // namespace parvela
