#pragma once

#include <chrono>
#include <deque>

namespace parvela {

/// Tells a page that died once from one that dies whenever it is loaded.
class CrashGuard {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    static constexpr std::size_t allowedReloads = 2;
    static constexpr std::chrono::seconds window{60};

    /// The page's process has ended: whether to load the page again.
    bool mayReload(TimePoint now) {
        while (!crashes_.empty() && now - crashes_.front() >= window) crashes_.pop_front();
        crashes_.push_back(now);
        return crashes_.size() <= allowedReloads;
    }

private:
    std::deque<TimePoint> crashes_;
};

}  // namespace parvela
