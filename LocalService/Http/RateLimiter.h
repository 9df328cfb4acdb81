#pragma once

#include <ParvelaKit/Clock.h>

#include <chrono>
#include <optional>
#include <string>
#include <unordered_map>

namespace parvela::service {

/// Token buckets by name: each holds up to `burst` uses and refills evenly, `perMinute` uses a minute.
class RateLimiter {
public:
    struct Limit {
        double burst = 0;
        double perMinute = 0;
    };

    RateLimiter(const Clock& clock, Limit limit) : clock_(clock), limit_(limit) {}

    /// Takes one use. None when there was one; else how many seconds until the next, at least 1.
    std::optional<int> take(const std::string& name);
    /// The same answer without taking anything.
    std::optional<int> wait(const std::string& name);
    void forget(const std::string& name) { buckets_.erase(name); }

private:
    struct Bucket {
        double uses = 0;
        Instant at;
    };

    Bucket& refilled(const std::string& name);
    std::optional<int> secondsUntilUse(const Bucket& bucket) const;
    void dropFullBuckets(Instant now);

    const Clock& clock_;
    Limit limit_;
    std::unordered_map<std::string, Bucket> buckets_;
};

}  // namespace parvela::service
