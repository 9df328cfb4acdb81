#pragma once

#include <ParvelaKit/Task.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>
#include <utility>
#include <vector>

namespace parvela::test {

/// Sleeps that end when the test says so, or when they are stopped.
class FakeSleep {
public:
    std::function<Task<void>(std::chrono::milliseconds, std::stop_token)> function() const {
        return [sleepers = sleepers_](std::chrono::milliseconds duration, std::stop_token stop) {
            return sleep(sleepers, duration, std::move(stop));
        };
    }

    /// How long those that sleep now want to.
    std::vector<std::chrono::milliseconds> durations() const {
        std::vector<std::chrono::milliseconds> durations;
        for (const Sleeper& sleeper : *sleepers_) {
            if (!sleeper.woken.resolved()) durations.push_back(sleeper.duration);
        }
        return durations;
    }

    void wakeAll() const {
        const auto sleepers = std::exchange(*sleepers_, {});
        for (const Sleeper& sleeper : sleepers) sleeper.woken.resolve(true);
    }

private:
    struct Sleeper {
        std::chrono::milliseconds duration;
        Deferred<bool> woken;
    };

    static Task<void> sleep(std::shared_ptr<std::vector<Sleeper>> sleepers, std::chrono::milliseconds duration,
                            std::stop_token stop) {
        const Deferred<bool> woken;
        sleepers->push_back({duration, woken});
        const std::stop_callback interrupt(stop, [woken] { woken.resolve(false); });
        const bool rested = co_await woken;
        (void)rested;
    }

    std::shared_ptr<std::vector<Sleeper>> sleepers_ = std::make_shared<std::vector<Sleeper>>();
};

}  // namespace parvela::test
