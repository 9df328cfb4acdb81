#include "Queue/QueueMachine.h"

#include "Queue/RetryPolicy.h"

#include <cerrno>
#include <system_error>

#include <fmt/format.h>

namespace parvela {
namespace {

constexpr const char* keptOfflineNote = "Saved. It will be added when you are back online.";
constexpr const char* keptNote = "Saved. It will be added later.";

/// When another program sends, it is looked at again after this time. A command that adds one line sends for a moment
/// only.
constexpr std::chrono::milliseconds lockPause = std::chrono::seconds(1);
/// Those who send one line are done soon. Waiting for them gives its author the task, and not a promise.
constexpr int looksForTheLock = 60;
constexpr std::chrono::milliseconds betweenLooks{50};
/// So many lines in a row that the service fails over are not the lines' fault.
constexpr std::int64_t faultsOfAnOutage = 3;

std::filesystem::path lockFile(std::filesystem::path database) {
    return database += ".lock";
}

/// No other line would fare better with the same client.
bool concernsEveryLine(const APIError& error) {
    return error.kind() == APIError::Case::unauthorized || error.kind() == APIError::Case::missingToken ||
           error.kind() == APIError::Case::invalidURL;
}

bool foundNoService(const APIFailure& failure) {
    return failure == APIFailure(APIError::offline()) || failure == APIFailure(APIError::timedOut());
}

bool isSame(const std::optional<ParvelaAPI>& a, const ParvelaAPI& b) {
    return a && a->baseURL == b.baseURL && a->token == b.token;
}

}  // namespace

OfflineQueue::Machine::Machine(Environment environment)
    : environment_(std::move(environment)), lock_(lockFile(environment_.file)) {
    open();
    refreshCounts();
}

void OfflineQueue::Machine::open() {
    auto store = QueueStore::open(environment_.file, environment_.filePatience);
    const auto lock = lock_.take();
    if (lock == QueueLock::Attempt::unavailable && store) {
        store =
            Failure(QueueStore::OpenFailure{QueueStore::OpenProblem::unusable, std::generic_category().message(errno)});
    }
    // Set aside under the lock, so that no other program writes to the file while it gets its new name.
    if (!store && store.error().problem == QueueStore::OpenProblem::damaged && lock_.isHeld()) {
        if (const auto kept = setAside(environment_.file, now())) {
            store = QueueStore::open(environment_.file, environment_.filePatience);
            setNotice(
                fmt::format("The list of waiting lines was damaged. It was kept as \"{}\", and a new one was started.",
                            kept->string()));
        }
    }
    if (lock == QueueLock::Attempt::taken) lock_.release();
    mayOpenLater_ = !store && store.error().problem != QueueStore::OpenProblem::newerVersion;
    if (store) {
        store_ = *std::move(store);
        return;
    }
    setNotice(
        store.error().problem == QueueStore::OpenProblem::newerVersion
            ? "The waiting lines were saved by a newer version of Parvela. Until it is back, lines are sent at once "
              "or not at all."
            : fmt::format("Lines can't be saved for later ({}). They are sent at once or not at all.",
                          store.error().reason));
}

void OfflineQueue::Machine::reopen() {
    if (store_ || !mayOpenLater_) return;
    const auto before = status.get().notice;
    open();
    if (!store_) return;
    if (status.get().notice == before) setNotice(std::nullopt);
    refreshCounts();
}

void OfflineQueue::Machine::setNotice(std::optional<std::string> notice) {
    auto changed = status.get();
    changed.notice = std::move(notice);
    status.set(std::move(changed));
}

void OfflineQueue::Machine::noteStoreFailure(SqliteError error) {
    pauseFor(RetryPolicy::shortest);
    if (!error.isDamage()) return;
    store_.reset();
    unsettled_.clear();
    ++storeGeneration_;
    open();
}

std::vector<QueuedLine> OfflineQueue::Machine::lines(std::size_t count, std::size_t offset) {
    if (!store_) return {};
    auto lines = store_->lines(count, offset);
    if (!worked(lines)) return {};
    return *std::move(lines);
}

void OfflineQueue::Machine::setClient(std::optional<ParvelaAPI> api) {
    client_ = std::move(api);
    retryNow();
}

void OfflineQueue::Machine::retryNow() {
    halted_ = false;
    pausedUntil_ = {};
    outagesInRow_ = faultsInRow_ = 0;
    reopen();
    if (client_ && store_) (void)worked(store_->forgetPauses(client_->baseURL.text()));
    startPump();
}

bool OfflineQueue::Machine::retryFailed(std::optional<std::int64_t> id) {
    if (!store_) return false;
    const auto found = store_->retryFailed(id);
    if (!worked(found) || !*found) return false;
    retryNow();
    return true;
}

bool OfflineQueue::Machine::discard(std::int64_t id) {
    if (!store_) return false;
    const auto found = store_->discard(id);
    const bool done = worked(found) && *found;
    refreshCounts();
    return done;
}

void OfflineQueue::Machine::close() {
    client_.reset();
    forgetHandedBack();
    closing_.request_stop();
    sleeping_.request_stop();
}

bool OfflineQueue::Machine::takeLock() {
    const auto attempt = lock_.take();
    lockedElsewhere_ = !lock_.isHeld();
    if (attempt == QueueLock::Attempt::taken && store_ && !worked(store_->recoverInterrupted())) {
        lock_.release();
        return false;
    }
    return !lockedElsewhere_;
}

void OfflineQueue::Machine::releaseLock() {
    if (writeUnsettled() && inFlight_.empty() && !pumping_) lock_.release();
}

bool OfflineQueue::Machine::writeUnsettled() {
    while (store_ && !unsettled_.empty()) {
        if (!worked(store_->settle(unsettled_.back()))) break;
        unsettled_.pop_back();
    }
    return unsettled_.empty();
}

void OfflineQueue::Machine::settle(const Settlement& settlement) {
    unsettled_.push_back(settlement);
    (void)writeUnsettled();
}

OfflineQueue::Machine::Flight OfflineQueue::Machine::takeOff(std::int64_t id) {
    return *inFlight_.insert({storeGeneration_, id}).first;
}

std::chrono::milliseconds OfflineQueue::Machine::pauseAfter(std::int64_t failures) const {
    return RetryPolicy::pause(failures, environment_.random());
}

Settlement OfflineQueue::Machine::judge(const TakenLine& line, const ParvelaAPI& api, const Answer& answer) {
    Settlement settlement{.id = line.id};
    if (answer) {
        outagesInRow_ = faultsInRow_ = 0;
        return settlement;
    }
    settlement.kind = Settlement::Kind::wait;
    if (answer.error().isCancelled()) {
        settlement.answerLost = true;
        return settlement;
    }
    const APIError& error = *answer.error().error();
    settlement.failure = error.message();
    if (!error.isWorthRetrying()) {
        settlement.kind = Settlement::Kind::fail;
        halted_ = concernsEveryLine(error) && isSame(client_, api);
        return settlement;
    }
    if (error.kind() == APIError::Case::server) {
        settlement.isSetback = true;
        settlement.notBefore = now() + pauseAfter(line.setbacks + 1);
        if (++faultsInRow_ >= faultsOfAnOutage) pauseFor(pauseAfter(faultsInRow_ - faultsOfAnOutage + 1));
        return settlement;
    }
    auto pause = pauseAfter(++outagesInRow_);
    if (error.kind() == APIError::Case::timedOut) settlement.isSetback = settlement.answerLost = true;
    if (error.kind() == APIError::Case::rateLimited) {
        pause = std::max(pause, RetryPolicy::askedFor(error.retryAfter()));
        // Kept on disk, because a restart must not break the service's rule.
        if (store_) (void)worked(store_->closeSiteUntil(api.baseURL.text(), now() + pause));
    }
    pauseFor(pause);
    return settlement;
}

Task<void> OfflineQueue::Machine::pump(std::shared_ptr<Machine> machine) {
    if (machine->pumping_) {
        machine->pumpAgain_ = true;
        co_return;
    }
    machine->sleeping_.request_stop();
    machine->pumping_ = true;
    do {
        machine->pumpAgain_ = false;
        auto round = pass(machine);
        co_await round;
    } while (machine->pumpAgain_);
    machine->pumping_ = false;
    machine->releaseLock();
    machine->sleepUntilDue();
}

Task<void> OfflineQueue::Machine::pass(std::shared_ptr<Machine> machine) {
    std::optional<Settlement> settlement;
    while (machine->mayCall()) {
        const ParvelaAPI api = *machine->client_;
        // One transaction, and so one wait for the disk, ends the line before and starts the next.
        auto taken = machine->store_->settleAndTake(settlement, api.baseURL.text(), machine->now());
        if (!machine->worked(taken)) break;
        settlement.reset();
        machine->refreshCounts();
        if (!*taken) break;

        const TakenLine line = **std::move(taken);
        const Flight flight = machine->takeOff(line.id);
        auto call = QuickAddService::send(line.draft, api, machine->closing_.get_token());
        const Answer answer = co_await call;
        machine->inFlight_.erase(flight);
        const Settlement judged = machine->judge(line, api, answer);
        if (machine->isCurrent(flight)) settlement = judged;
    }
    if (settlement) machine->settle(*settlement);
    machine->refreshCounts();
}

bool OfflineQueue::Machine::mayCall() {
    if (!writeUnsettled() || !client_ || !store_ || halted_) return false;
    const auto closedUntil = store_->siteClosedUntil(client_->baseURL.text());
    if (!worked(closedUntil)) return false;
    // A pause that is longer than any that is ever kept comes from a clock that was set back.
    if (*closedUntil - now() <= RetryPolicy::longestAskedFor) pausedUntil_ = std::max(pausedUntil_, *closedUntil);
    return now() >= pausedUntil_ && takeLock();
}

void OfflineQueue::Machine::sleepUntilDue() {
    std::optional<Instant> next;
    if (client_ && store_ && !halted_) {
        const auto due = store_->nextDue(client_->baseURL.text());
        if (worked(due) && *due) next = std::max(lockedElsewhere_ ? now() + lockPause : **due, pausedUntil_);
    }
    if (!unsettled_.empty() && !closing_.stop_requested()) next = pausedUntil_;
    auto changed = status.get();
    changed.nextTry = next;
    status.set(std::move(changed));
    if (!next) return;

    sleeping_ = std::stop_source();
    const auto duration = std::clamp(*next - now(), std::chrono::milliseconds(0), RetryPolicy::longestAskedFor);
    wakeAfter(weak_from_this(), duration, sleeping_.get_token(), environment_.sleep).detach();
}

Task<void> OfflineQueue::Machine::wakeAfter(std::weak_ptr<Machine> machine, std::chrono::milliseconds duration,
                                            std::stop_token stop, decltype(Environment::sleep) sleep) {
    auto nap = sleep(duration, stop);
    co_await nap;
    if (stop.stop_requested()) co_return;
    if (const auto awake = machine.lock()) awake->startPump();
}

void OfflineQueue::Machine::refreshCounts() {
    QueueCounts counts;
    if (store_) {
        const auto counted = store_->counts();
        // A file that cannot be read now has not lost its lines.
        if (!worked(counted) && store_) return;
        if (counted) counts = *counted;
    }
    auto changed = status.get();
    changed.waiting = counts.waiting;
    changed.sending = counts.sending;
    changed.failed = counts.failed;
    if (pumping_) changed.nextTry.reset();
    status.set(std::move(changed));
}

OfflineQueue::Machine::Kept OfflineQueue::Machine::keep(const NewQueuedLine& line) {
    reopen();
    if (!store_ || line.line.size() > longestKeptLine) return {};
    const bool maySend = takeLock();
    const auto inserted = store_->insert(line, maySend ? QueuedLine::State::sending : QueuedLine::State::waiting);
    if (!worked(inserted)) return {};
    return {*inserted, maySend};
}

Task<OfflineQueue::Machine::Turn> OfflineQueue::Machine::waitForLock(std::shared_ptr<Machine> machine, Flight flight,
                                                                     std::stop_token stop) {
    for (int look = 0; look < looksForTheLock; ++look) {
        auto nap = machine->environment_.sleep(betweenLooks, stop);
        co_await nap;
        if (!machine->store_ || !machine->isCurrent(flight)) break;
        if (stop.stop_requested()) co_return machine->discard(flight.second) ? Turn::takenBack : Turn::others;
        if (!machine->takeLock()) continue;
        const auto taken = machine->store_->takeWaiting(flight.second);
        if (machine->worked(taken) && *taken) co_return Turn::ours;
        break;
    }
    co_return Turn::others;
}

Task<Result<QuickAddReceipt, QuickAddFailure>> OfflineQueue::Machine::submit(std::shared_ptr<Machine> machine,
                                                                             QuickAddSubmission submission,
                                                                             std::string boardName, ParvelaAPI api,
                                                                             std::stop_token stop) {
    const auto draft = QuickAddService::parse(submission);
    if (!draft) co_return Failure(draft.error());

    const NewQueuedLine line{.site = api.baseURL.text(),
                             .line = std::move(submission.line),
                             .boardId = std::move(submission.board),
                             .boardName = std::move(boardName),
                             .day = submission.today,
                             .createdAt = machine->now(),
                             .draft = *draft};
    Kept kept = machine->keep(line);
    machine->refreshCounts();
    if (kept.id && !kept.maySend) {
        auto turn = waitForLock(machine, {machine->storeGeneration_, *kept.id}, stop);
        const Turn got = co_await turn;
        if (got == Turn::takenBack) co_return Failure<QuickAddFailure>(APIFailure::cancelled());
        kept.maySend = got == Turn::ours;
    }
    if (kept.id && !kept.maySend) {
        machine->startPump();
        co_return QuickAddReceipt{std::nullopt, keptNote};
    }

    std::optional<Flight> flight;
    if (kept.id) flight = machine->takeOff(*kept.id);
    auto call = QuickAddService::send(*draft, api, std::move(stop));
    Answer answer = co_await call;

    const bool isKept = flight && machine->isCurrent(*flight);
    const bool mayWait = !answer && foundNoService(answer.error());
    const bool waits = isKept && mayWait;
    if (!answer && !waits) {
        if (flight) forgetNextTurn(machine, *flight).detach();
        if (mayWait) co_return Failure(QuickAddFailure::notKept(std::move(answer.error())));
        co_return Failure<QuickAddFailure>(std::move(answer.error()));
    }
    if (flight) machine->inFlight_.erase(*flight);
    if (isKept) machine->settle(machine->judge({.id = *kept.id}, api, answer));
    if (answer && isSame(machine->client_, api)) machine->pausedUntil_ = {};  // the service is there again
    machine->refreshCounts();
    machine->startPump();
    if (waits) co_return QuickAddReceipt{std::nullopt, keptOfflineNote};
    co_return QuickAddReceipt{std::move(answer->task), std::move(answer->note)};
}

Task<void> OfflineQueue::Machine::forgetNextTurn(std::shared_ptr<Machine> machine, Flight flight) {
    // Until its author has seen that the line failed, a program that is killed must find it again.
    machine->handedBack_.insert(flight);
    auto turn = machine->environment_.sleep(std::chrono::milliseconds(0), machine->closing_.get_token());
    co_await turn;
    machine->forgetHandedBack();
    machine->startPump();
}

void OfflineQueue::Machine::forgetHandedBack() {
    for (const Flight& flight : std::exchange(handedBack_, {})) {
        inFlight_.erase(flight);
        if (isCurrent(flight)) settle({.id = flight.second});
    }
    refreshCounts();
}

}  // namespace parvela
