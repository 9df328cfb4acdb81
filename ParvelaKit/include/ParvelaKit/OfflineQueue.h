#pragma once

#include <ParvelaKit/CivilDate.h>
#include <ParvelaKit/Clock.h>
#include <ParvelaKit/Observable.h>
#include <ParvelaKit/ParvelaAPI.h>
#include <ParvelaKit/QuickAddService.h>
#include <ParvelaKit/Result.h>
#include <ParvelaKit/Task.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// A quick-add line that is not on its board yet.
struct QueuedLine {
    enum class State {
        waiting,  ///< will be sent by itself
        sending,
        failed,  ///< refused for good; waits for the user to retry or discard it
    };

    std::int64_t id = 0;
    std::string line;
    std::string boardId;
    std::string boardName;
    CivilDate day;  ///< on which it was typed, which is what "tomorrow" in it counts from
    Instant createdAt;
    State state = State::waiting;
    std::int64_t attempts = 0;  ///< started so far
    /// How many of them ended without an answer, by a time-out or with the program itself. The service may have carried
    /// one of them out, so such a line can turn into two tasks.
    std::int64_t lostAnswers = 0;
    std::optional<std::string> lastFailure;  ///< the user-facing text

    bool operator==(const QueuedLine&) const = default;
};

struct OfflineQueueStatus {
    std::size_t waiting = 0;
    std::size_t sending = 0;
    std::size_t failed = 0;
    /// When the next waiting line is tried by itself.
    std::optional<Instant> nextTry;
    /// What the user should know about the queue itself, such as a damaged file that was kept aside.
    std::optional<std::string> notice;

    bool operator==(const OfflineQueueStatus&) const = default;
};

/// How a submitted line ended well.
struct QuickAddReceipt {
    /// The created task; none when the line waits in the queue instead.
    std::optional<TaskSummary> task;
    std::optional<std::string> note;

    bool operator==(const QuickAddReceipt&) const = default;
};

/// Sends quick-add lines, and keeps those that cannot be sent until they can.
///
/// Every line is on disk before it is sent, and an attempt is on disk before it starts, so a program that is killed
/// loses no line; what was being sent is tried again at the next start. Only the program that holds the queue's lock
/// file sends, and the system drops that lock with the program. A line goes only to the API site that it was typed for.
///
/// A line is tried again after a time-out, without a connection, when rate limited and after a fault of the service (a
/// status of 500 or more), with growing pauses between 5 seconds and 5 minutes and never before the time that the
/// service named. Any other failure is final.
///
/// Single-threaded. Destroying the queue ends its work; lines being sent count as interrupted.
class OfflineQueue {
public:
    struct Environment {
        std::filesystem::path file;      ///< of the database; its folder is made when missing
        const Clock* clock;              ///< must outlive the queue and its running calls
        std::function<double()> random;  ///< evenly between 0 and 1
        /// Finishes after a time, or soon after a stop request.
        std::function<Task<void>(std::chrono::milliseconds, std::stop_token)> sleep;
        /// How long an operation may block while other programs write to the file.
        std::chrono::milliseconds filePatience{250};
    };

    /// Longer lines are sent, but not kept.
    static constexpr std::size_t longestKeptLine = std::size_t{256} * 1024;

    explicit OfflineQueue(Environment environment);
    OfflineQueue(const OfflineQueue&) = delete;
    OfflineQueue& operator=(const OfflineQueue&) = delete;
    ~OfflineQueue();

    const Observable<OfflineQueueStatus>& status() const;
    /// The oldest `count` lines after the first `offset`, those that failed for good first.
    std::vector<QueuedLine> lines(std::size_t count, std::size_t offset = 0) const;

    /// Sends one line at once, or when others who send now are done, within seconds. When the service cannot be reached
    /// or takes too long, the line waits in the queue; any other failure is the caller's, and the line is not kept.
    /// Cancelling takes the line back.
    Task<Result<QuickAddReceipt, QuickAddFailure>> submit(QuickAddSubmission submission, std::string boardName,
                                                          ParvelaAPI api, std::stop_token stop = {});

    /// The client that waiting lines are sent with from now on, starting at once; none stops the sending.
    void setClient(std::optional<ParvelaAPI> api);
    /// Tries every waiting line now, whatever its pause, unless the service asked to wait: for when the network is back
    /// or the user asks.
    void retryNow();
    /// Makes a failed line wait again and tries it now. False when there is no such line.
    bool retry(std::int64_t id);
    void retryAllFailed();
    /// Forgets a line that is not being sent. False when there is none.
    bool discard(std::int64_t id);

private:
    class Machine;
    std::shared_ptr<Machine> machine_;
};

}  // namespace parvela
