#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace parvela {

/// Lets a page's messages through at a rate that leaves the application's main thread free for its user. A page that
/// posts more has the newest message of each type kept, so that what it said last is heard in the end.
class MessageGate {
public:
    struct Message {
        std::string type;
        std::string address;
        std::string body;
    };
    using Send = std::function<void(const Message&)>;

    /// Messages that pass at once, and each second after those.
    static constexpr std::int64_t burst = 60;
    static constexpr std::int64_t perSecond = 60;

    explicit MessageGate(Send send) : send_(std::move(send)) {}

    /// `now` counts microseconds and never goes back.
    void post(Message message, std::int64_t now);
    /// Sends what has been kept as far as it may go now.
    void flush(std::int64_t now);
    bool isHolding() const noexcept { return !held_.empty(); }

private:
    bool mayPass(std::int64_t now);

    Send send_;
    std::int64_t credit_ = burst * 1'000'000;  ///< a message costs a million
    std::int64_t countedAt_ = 0;
    std::vector<Message> held_;  ///< in the order in which they were posted
};

}  // namespace parvela
