#pragma once

#include "Domain/Ids.h"

#include <ParvelaKit/Clock.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace parvela::service {

/// What a finished call changed, so that open windows can fetch it again.
struct Change {
    std::vector<BoardId> boards;
    std::vector<TaskId> tasks;  ///< of those boards
    bool boardList = false;     ///< names, order or visibility of boards
    std::vector<PersonId> inboxes;
    std::optional<PersonId> timer;
};

/// Tells whoever subscribed about every change, after it is stored.
class ChangeFeed {
public:
    explicit ChangeFeed(const Clock& clock) : revision_(clock.now().time_since_epoch().count()) {}

    /// Ends the subscription when destroyed. Must not outlive the feed.
    class Subscription {
    public:
        Subscription() = default;
        Subscription(ChangeFeed& feed, int key) : feed_(&feed), key_(key) {}
        Subscription(Subscription&& other) noexcept : feed_(std::exchange(other.feed_, nullptr)), key_(other.key_) {}
        Subscription& operator=(Subscription&& other) noexcept {
            std::swap(feed_, other.feed_);
            std::swap(key_, other.key_);
            return *this;
        }
        ~Subscription() {
            if (feed_) feed_->observers_.erase(key_);
        }

    private:
        ChangeFeed* feed_ = nullptr;
        int key_ = 0;
    };

    [[nodiscard]] Subscription subscribe(std::function<void(const Change&)> observer) {
        observers_.emplace(++lastKey_, std::move(observer));
        return {*this, lastKey_};
    }

    void publish(const Change& change) {
        ++revision_;
        const auto observers = observers_;
        for (const auto& [key, observer] : observers) observer(change);
    }

    /// Grows with every change, also across restarts: it starts at the time of day in milliseconds.
    std::int64_t revision() const noexcept { return revision_; }

private:
    std::map<int, std::function<void(const Change&)>> observers_;
    int lastKey_ = 0;
    std::int64_t revision_;
};

}  // namespace parvela::service
