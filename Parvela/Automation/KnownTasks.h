#pragma once

#include <ParvelaKit/ParvelaSession.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/TaskIndex.h>
#include <Platform/MainLoop.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace parvela {

/// What desktop search looks through: the open tasks and the boards, read from the service when somebody searches and
/// what is known has grown old. The service never learns what is searched for.
class KnownTasks : public std::enable_shared_from_this<KnownTasks> {
public:
    /// How long a first search waits for the service.
    static constexpr std::chrono::milliseconds patience{1500};
    static constexpr std::chrono::seconds freshness{60};
    /// How long a search waits that follows a change.
    static constexpr std::chrono::milliseconds changePatience{400};
    /// Pause after a failed reading.
    static constexpr std::chrono::seconds failurePause{10};
    /// A list this long may be cut off by the service; then each board is read by itself.
    static constexpr std::size_t longList = 1000;
    static constexpr std::size_t mostBoards = 100;

    explicit KnownTasks(ParvelaSession session) : session_(std::move(session)) {}

    const TaskIndex& index() const noexcept { return index_; }
    const ParvelaSession& session() const noexcept { return session_; }
    /// Something was read with the link in force.
    bool isKnown() const noexcept { return isKnown_; }

    /// Finishes at once when something is known, else when it is, when it cannot be, or when patience ends.
    static Task<void> ready(std::shared_ptr<KnownTasks> self);
    /// The link has changed: what is known is forgotten.
    void forget();
    /// What this program has added or completed is known at once.
    void put(const std::vector<TaskSummary>& tasks);
    /// Tasks have changed that are not at hand: the next search waits a moment for the service.
    void changed();

private:
    static Task<void> read(std::shared_ptr<KnownTasks> self);
    void finish();
    bool isStale() const;

    ParvelaSession session_;
    TaskIndex index_;
    bool isKnown_ = false;
    bool isReading_ = false;
    bool hasChanged_ = false;
    std::vector<TaskSummary> putMeanwhile_;  ///< while a list was read that may be older
    std::optional<Instant> readAt_, failedAt_;
    std::uint64_t epoch_ = 0;
    std::uint64_t changes_ = 0;  ///< a list that was asked for before the last one is old already
    std::vector<Deferred<bool>> waiting_;
    MainLoopTimer patience_;
};

}  // namespace parvela
