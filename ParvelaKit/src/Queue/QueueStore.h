#pragma once

#include "Queue/Sqlite.h"

#include <ParvelaKit/OfflineQueue.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace parvela {

/// A line to be kept, before it has a place in the queue.
struct NewQueuedLine {
    std::string site;  ///< the API site it was typed for
    std::string line;
    std::string boardId;
    std::string boardName;
    CivilDate day;
    Instant createdAt;
    QuickAddDraft draft;
};

/// A line whose attempt is on disk and may start now.
struct TakenLine {
    std::int64_t id = 0;
    std::int64_t setbacks = 0;  ///< earlier failures that may be the line's own fault
    QuickAddDraft draft;
};

/// What became of an attempt.
struct Settlement {
    enum class Kind {
        remove,  ///< done with: the task exists, or its author has the line back
        wait,
        fail,
    };

    std::int64_t id = 0;
    Kind kind = Kind::remove;
    std::optional<std::string> failure = std::nullopt;
    bool isSetback = false;
    bool answerLost = false;
    Instant notBefore{};  ///< for `wait`
};

struct QueueCounts {
    std::size_t waiting = 0, sending = 0, failed = 0;
};

/// The queue's table in its database file. Every change is on disk when its operation returns.
class QueueStore {
public:
    enum class OpenProblem { damaged, newerVersion, unusable };
    struct OpenFailure {
        OpenProblem problem;
        std::string reason;
    };

    static Result<QueueStore, OpenFailure> open(const std::filesystem::path& file, std::chrono::milliseconds patience);

    Result<std::int64_t, SqliteError> insert(const NewQueuedLine& line, QueuedLine::State state);

    SqliteStatus settle(const Settlement& settlement);
    /// Settles, if there is anything to settle, and marks the next line of the site that is due as being sent, in one
    /// step; none when no line is due.
    Result<std::optional<TakenLine>, SqliteError> settleAndTake(const std::optional<Settlement>& settlement,
                                                                const std::string& site, Instant now);

    /// Makes lines wait again whose program ended while it sent them.
    SqliteStatus recoverInterrupted();
    /// Marks a line that still waits as being sent. False when it does not: somebody else took it.
    Result<bool, SqliteError> takeWaiting(std::int64_t id);
    /// Makes one failed line wait again, or every one. Tells whether there was any.
    Result<bool, SqliteError> retryFailed(std::optional<std::int64_t> id);
    /// Removes a line that is not being sent. Tells whether there was one.
    Result<bool, SqliteError> discard(std::int64_t id);
    /// Lets the site's lines be tried at once.
    SqliteStatus forgetPauses(const std::string& site);

    /// The time before which the site asked not to be called; the epoch when it did not ask.
    Result<Instant, SqliteError> siteClosedUntil(const std::string& site);
    SqliteStatus closeSiteUntil(const std::string& site, Instant until);

    /// When the first waiting line of the site is due; none when nothing waits for it.
    Result<std::optional<Instant>, SqliteError> nextDue(const std::string& site);
    Result<QueueCounts, SqliteError> counts();
    Result<std::vector<QueuedLine>, SqliteError> lines(std::size_t count, std::size_t offset);

private:
    explicit QueueStore(Sqlite database) : database_(std::move(database)) {}

    Result<std::optional<TakenLine>, SqliteError> take(const std::string& site, Instant now);

    Sqlite database_;
};

/// Renames a damaged database and the files beside it, so that a new one can be made. The new name, or none when
/// renaming failed.
std::optional<std::filesystem::path> setAside(const std::filesystem::path& file, Instant now);

}  // namespace parvela
