#include "QuickAdd/QueueText.h"

#include <chrono>
#include <cstdint>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace parvela {

namespace {

/// Until the next try, rounded up, so that no try is late.
std::string pause(std::chrono::milliseconds left) {
    using namespace std::chrono;
    if (left <= 0ms) return "now";
    if (left <= 60s) return fmt::format("in {} s", ceil<seconds>(left).count());
    return fmt::format("in {} min", ceil<minutes>(left).count());
}

}  // namespace

std::string queueText(const OfflineQueueStatus& status, Instant now) {
    std::vector<std::string> parts;
    if (status.failed > 0) parts.push_back(fmt::format("{} failed", status.failed));
    if (status.sending > 0) parts.push_back(fmt::format("{} being sent", status.sending));
    if (status.waiting > 0) {
        std::string waiting = fmt::format("{} waiting", status.waiting);
        if (status.nextTry && status.sending == 0) waiting += ", next try " + pause(*status.nextTry - now);
        parts.push_back(std::move(waiting));
    }
    return fmt::format("{}", fmt::join(parts, " · "));
}

}  // namespace parvela
