#pragma once

#include "Queue/QueueLock.h"
#include "Queue/QueueStore.h"

#include <ParvelaKit/OfflineQueue.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace parvela {

/// The queue's moving parts. Shared by its running coroutines, so that destroying the queue in the middle of a call is
/// safe.
class OfflineQueue::Machine : public std::enable_shared_from_this<OfflineQueue::Machine> {
public:
    explicit Machine(Environment environment);

    Observable<OfflineQueueStatus> status;

    std::vector<QueuedLine> lines(std::size_t count, std::size_t offset);
    void setClient(std::optional<ParvelaAPI> api);
    void retryNow();
    bool retryFailed(std::optional<std::int64_t> id);
    bool discard(std::int64_t id);
    void close();

    static Task<Result<QuickAddReceipt, QuickAddFailure>> submit(std::shared_ptr<Machine> machine,
                                                                 QuickAddSubmission submission, std::string boardName,
                                                                 ParvelaAPI api, std::stop_token stop);

private:
    using Answer = Result<QuickAddService::Outcome, APIFailure>;
    /// A line whose answer is awaited, by the database it came from and its id there.
    using Flight = std::pair<std::int64_t, std::int64_t>;

    void open();
    /// Another try with a file that could not be opened before.
    void reopen();
    void setNotice(std::optional<std::string> notice);
    Instant now() const { return environment_.clock->now(); }

    /// Takes the right to send, and what an earlier holder left behind. False when another program has it.
    bool takeLock();
    void releaseLock();
    /// Writes down the results that could not be written down before. False when some still cannot.
    bool writeUnsettled();
    void settle(const Settlement& settlement);

    Flight takeOff(std::int64_t id);
    /// False when the database that the line came from was set aside meanwhile.
    bool isCurrent(const Flight& flight) const { return flight.first == storeGeneration_; }

    /// The new line's id, and whether this program may send it; no id when it cannot be kept.
    struct Kept {
        std::optional<std::int64_t> id;
        bool maySend = true;
    };
    Kept keep(const NewQueuedLine& line);
    /// Who sends a line that was kept while another program held the lock.
    enum class Turn { ours, others, takenBack };
    static Task<Turn> waitForLock(std::shared_ptr<Machine> machine, Flight flight, std::stop_token stop);
    /// Removes a line that is being handed back to its author.
    static Task<void> forgetNextTurn(std::shared_ptr<Machine> machine, Flight flight);
    void forgetHandedBack();

    /// Sends what is due until nothing is, then sleeps until something will be.
    static Task<void> pump(std::shared_ptr<Machine> machine);
    static Task<void> pass(std::shared_ptr<Machine> machine);
    static Task<void> wakeAfter(std::weak_ptr<Machine> machine, std::chrono::milliseconds duration,
                                std::stop_token stop, decltype(Environment::sleep) sleep);
    void startPump() { pump(shared_from_this()).detach(); }
    bool mayCall();
    void sleepUntilDue();
    void refreshCounts();

    Settlement judge(const TakenLine& line, const ParvelaAPI& api, const Answer& answer);
    std::chrono::milliseconds pauseAfter(std::int64_t failures) const;
    void pauseFor(std::chrono::milliseconds duration) { pausedUntil_ = std::max(pausedUntil_, now() + duration); }

    /// Looks at the result of a database operation: a damaged file is set aside, and after any failure nothing is sent
    /// for a while.
    template <class T>
    bool worked(const Result<T, SqliteError>& result) {
        if (!result) noteStoreFailure(result.error());
        return result.has_value();
    }
    void noteStoreFailure(SqliteError error);

    Environment environment_;
    QueueLock lock_;
    std::optional<QueueStore> store_;
    std::int64_t storeGeneration_ = 0;
    bool mayOpenLater_ = false;  ///< there is no store, for a reason that may pass
    std::optional<ParvelaAPI> client_;
    std::stop_source closing_;

    std::set<Flight> inFlight_;
    std::set<Flight> handedBack_;  ///< of those, the ones whose author has the line back
    std::vector<Settlement> unsettled_;
    bool pumping_ = false;
    bool pumpAgain_ = false;
    std::stop_source sleeping_;

    Instant pausedUntil_{};          ///< no line is tried before
    bool halted_ = false;            ///< no line can succeed until something is set right
    bool lockedElsewhere_ = false;   ///< by another program
    std::int64_t outagesInRow_ = 0;  ///< attempts that found no service
    std::int64_t faultsInRow_ = 0;   ///< lines that the service failed over
};

}  // namespace parvela
