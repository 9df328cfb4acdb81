#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

namespace parvela {

/// How long queued lines wait between attempts.
struct RetryPolicy {
    static constexpr std::chrono::milliseconds shortest = std::chrono::seconds(5);
    static constexpr std::chrono::milliseconds longest = std::chrono::minutes(5);
    /// A service that asks for more is asked again after this time, in case it meant something else.
    static constexpr std::chrono::milliseconds longestAskedFor = std::chrono::hours(24);

    /// The pause after so many failures in a row: doubled each time, and cut by a random part of up to a half, so that
    /// many programs do not come back in the same moment. `random` is between 0 and 1.
    static std::chrono::milliseconds pause(std::int64_t failures, double random) {
        const auto doublings = std::clamp<std::int64_t>(failures - 1, 0, 10);
        const auto whole = std::min(longest, 2 * shortest * (std::int64_t{1} << doublings));
        const auto cut = std::chrono::milliseconds(
            static_cast<std::int64_t>(std::clamp(random, 0.0, 1.0) * static_cast<double>(whole.count()) / 2));
        return whole - cut;
    }

    /// The pause that a rate-limited answer asks for.
    static std::chrono::milliseconds askedFor(std::optional<std::int64_t> seconds) {
        const std::int64_t most = std::chrono::duration_cast<std::chrono::seconds>(longestAskedFor).count();
        return std::chrono::seconds(std::clamp<std::int64_t>(seconds.value_or(0), 0, most));
    }
};

}  // namespace parvela
