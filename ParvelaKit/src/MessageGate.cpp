#include <ParvelaKit/MessageGate.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace parvela {

namespace {

constexpr std::int64_t cost = 1'000'000;
/// More types than the application knows.
constexpr std::size_t mostHeld = 16;

}  // namespace

void MessageGate::post(Message message, std::int64_t now) {
    if (held_.empty() && mayPass(now)) {
        send_(message);
        return;
    }
    std::erase_if(held_, [&message](const Message& earlier) { return earlier.type == message.type; });
    if (held_.size() < mostHeld) held_.push_back(std::move(message));
}

void MessageGate::flush(std::int64_t now) {
    std::size_t sent = 0;
    while (sent < held_.size() && mayPass(now)) send_(held_[sent++]);
    held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(sent));
}

bool MessageGate::mayPass(std::int64_t now) {
    // Long silences count no more than one full burst.
    const std::int64_t passed = std::clamp<std::int64_t>(now - countedAt_, 0, burst * cost / perSecond);
    countedAt_ = now;
    credit_ = std::min(credit_ + passed * perSecond, burst * cost);
    if (credit_ < cost) return false;
    credit_ -= cost;
    return true;
}

}  // namespace parvela
