#include "Http/RateLimiter.h"

#include <algorithm>
#include <cmath>

namespace parvela::service {

namespace {

/// More names than any honest use has; beyond it the buckets that are full again are dropped.
constexpr std::size_t manyBuckets = 4096;

double minutesBetween(Instant from, Instant to) {
    return std::max(0.0, std::chrono::duration<double, std::ratio<60>>(to - from).count());
}

}  // namespace

std::optional<int> RateLimiter::take(const std::string& name) {
    Bucket& bucket = refilled(name);
    if (auto seconds = secondsUntilUse(bucket)) return seconds;
    bucket.uses -= 1;
    return {};
}

std::optional<int> RateLimiter::wait(const std::string& name) {
    return secondsUntilUse(refilled(name));
}

RateLimiter::Bucket& RateLimiter::refilled(const std::string& name) {
    const Instant now = clock_.now();
    if (buckets_.size() >= manyBuckets) dropFullBuckets(now);
    Bucket& bucket = buckets_.try_emplace(name, Bucket{limit_.burst, now}).first->second;
    bucket.uses = std::min(limit_.burst, bucket.uses + minutesBetween(bucket.at, now) * limit_.perMinute);
    bucket.at = now;
    return bucket;
}

std::optional<int> RateLimiter::secondsUntilUse(const Bucket& bucket) const {
    if (bucket.uses >= 1) return {};
    return std::max(1, static_cast<int>(std::ceil((1 - bucket.uses) / limit_.perMinute * 60)));
}

void RateLimiter::dropFullBuckets(Instant now) {
    std::erase_if(buckets_, [&](const auto& entry) {
        return entry.second.uses + minutesBetween(entry.second.at, now) * limit_.perMinute >= limit_.burst;
    });
}

}  // namespace parvela::service
