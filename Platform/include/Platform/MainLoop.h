#pragma once

#include <ParvelaKit/Task.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>
#include <utility>

#include <glib.h>

namespace parvela {

/// Calls a function later on the main context of the thread that made it. Destroying it, or reset(), takes the call
/// back.
class MainLoopTimer {
public:
    enum class Kind { once, repeating };

    MainLoopTimer() noexcept = default;
    /// `action` may destroy the timer. Must not be called from several threads.
    MainLoopTimer(std::chrono::milliseconds interval, std::function<void()> action, Kind kind = Kind::once);
    MainLoopTimer(MainLoopTimer&&) noexcept = default;
    MainLoopTimer& operator=(MainLoopTimer&& other) noexcept;
    ~MainLoopTimer() { reset(); }

    void reset() noexcept;
    bool isActive() const noexcept;

private:
    struct SourceDeleter {
        void operator()(GSource* source) const noexcept;
    };
    std::unique_ptr<GSource, SourceDeleter> source_;
};

/// Runs `action` in a later turn of the main context of the calling thread.
void runSoon(std::function<void()> action);

/// Finishes after `duration`, or soon after a stop request. The stop request may come from any thread.
Task<void> sleepFor(std::chrono::milliseconds duration, std::stop_token stop = {});

/// Turns the main context of this thread until the task is done: how a program without a main loop of its own waits.
template <class T>
T runUntilDone(Task<T> task) {
    GMainContext* const context = g_main_context_get_thread_default();
    while (!task.done()) g_main_context_iteration(context, TRUE);
    if constexpr (!std::is_void_v<T>) return std::move(task).result();
}

/// Calls `action` on the main context of the thread that made it, soon after a stop request from any thread. Destroying
/// it takes the call back.
class StopWatch {
public:
    StopWatch(std::stop_token stop, std::function<void()> action);

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
    std::stop_callback<std::function<void()>> callback_;
};

}  // namespace parvela
