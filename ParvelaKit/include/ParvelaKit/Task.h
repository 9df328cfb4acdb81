#pragma once

#include <concepts>
#include <coroutine>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

namespace parvela {

template <class T>
class Task;

namespace detail {

/// What the frame and its Task share: who waits, and whether anybody still will.
struct TaskPromiseBase {
    std::coroutine_handle<> continuation;
    bool detached = false;

    struct FinalAwaiter {
        bool await_ready() const noexcept { return false; }

        template <class Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> frame) const noexcept {
            auto waiting = frame.promise().continuation;
            if (frame.promise().detached) frame.destroy();
            return waiting ? waiting : std::noop_coroutine();
        }

        void await_resume() const noexcept {}
    };

    std::suspend_never initial_suspend() const noexcept { return {}; }
    FinalAwaiter final_suspend() const noexcept { return {}; }

    /// Failures are values here; an exception that leaves a coroutine is a programming error.
    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
};

template <class T>
struct TaskPromise : TaskPromiseBase {
    std::optional<T> value;

    Task<T> get_return_object() noexcept;

    template <std::convertible_to<T> U>
    void return_value(U&& result) {
        value.emplace(std::forward<U>(result));
    }
};

template <>
struct TaskPromise<void> : TaskPromiseBase {
    Task<void> get_return_object() noexcept;
    void return_void() const noexcept {}
};

}  // namespace detail

/// One asynchronous operation on the thread that started it.
///
/// Tasks are eager: the body runs up to its first suspension before the call returns, so an operation that needs no
/// waiting is finished when its Task appears. Dropping a Task does not cancel the work; it runs on unobserved and frees
/// its frame at the end. Cancellation travels separately, as a std::stop_token argument. A Task is awaited at most
/// once.
template <class T>
class [[nodiscard]] Task {
public:
    using promise_type = detail::TaskPromise<T>;

    explicit Task(std::coroutine_handle<promise_type> frame) noexcept : frame_(frame) {}
    Task(Task&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
    Task& operator=(Task&& other) noexcept {
        if (this != &other) {
            release();
            frame_ = std::exchange(other.frame_, nullptr);
        }
        return *this;
    }
    ~Task() { release(); }

    bool done() const noexcept { return frame_.done(); }

    /// The finished value. Only for a task that is done().
    decltype(auto) result() && {
        if constexpr (!std::is_void_v<T>) return std::move(*frame_.promise().value);
    }

    /// Lets the work go on with nobody waiting for it.
    void detach() && { release(); }

    bool await_ready() const noexcept { return frame_.done(); }
    void await_suspend(std::coroutine_handle<> waiting) noexcept { frame_.promise().continuation = waiting; }
    T await_resume() {
        if constexpr (!std::is_void_v<T>) return std::move(*frame_.promise().value);
    }

private:
    void release() noexcept {
        auto frame = std::exchange(frame_, nullptr);
        if (!frame) return;
        if (frame.done()) {
            frame.destroy();
        } else {
            frame.promise().detached = true;
        }
    }

    std::coroutine_handle<promise_type> frame_;
};

namespace detail {

template <class T>
Task<T> TaskPromise<T>::get_return_object() noexcept {
    return Task<T>(std::coroutine_handle<TaskPromise<T>>::from_promise(*this));
}

inline Task<void> TaskPromise<void>::get_return_object() noexcept {
    return Task<void>(std::coroutine_handle<TaskPromise<void>>::from_promise(*this));
}

}  // namespace detail

/// The bridge from callbacks to coroutines: a value that one side awaits and the other side delivers, once.
///
///     Deferred<int> answer;
///     startSomething([answer](int value) { answer.resolve(value); });
///     int value = co_await answer;
///
/// Copies share the value. resolve() resumes the waiting coroutine before it returns; a second resolve() is ignored, so
/// a late callback after a time-out does no harm.
template <class T>
class Deferred {
public:
    Deferred() : state_(std::make_shared<State>()) {}

    void resolve(T value) const {
        auto state = state_;
        if (state->resolved) return;
        state->resolved = true;
        state->value.emplace(std::move(value));
        if (auto waiting = std::exchange(state->waiting, nullptr)) waiting.resume();
    }

    bool resolved() const noexcept { return state_->resolved; }

    bool await_ready() const noexcept { return state_->resolved; }
    void await_suspend(std::coroutine_handle<> waiting) const noexcept { state_->waiting = waiting; }
    T await_resume() const { return std::move(*state_->value); }

private:
    struct State {
        std::optional<T> value;
        std::coroutine_handle<> waiting;
        bool resolved = false;
    };

    std::shared_ptr<State> state_;
};

}  // namespace parvela
