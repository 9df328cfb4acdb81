#include "Automation/KnownTasks.h"

#include <ParvelaKit/Records.h>

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

namespace parvela {

bool KnownTasks::isStale() const {
    const Instant now = session_.clock().now();
    // A clock that was set back counts as much time gone by.
    const auto within = [now](const std::optional<Instant>& since, std::chrono::seconds span) {
        return since && now >= *since && now - *since < span;
    };
    return !within(readAt_, freshness) && !within(failedAt_, failurePause);
}

void KnownTasks::forget() {
    ++epoch_;
    index_.clear();
    isKnown_ = false;
    isReading_ = false;
    hasChanged_ = false;
    putMeanwhile_.clear();
    readAt_.reset();
    failedAt_.reset();
    finish();
}

void KnownTasks::put(const std::vector<TaskSummary>& tasks) {
    readAt_.reset();
    ++changes_;
    if (isKnown_) {
        for (const TaskSummary& task : tasks) index_.put(task);
    }
    if (isReading_) putMeanwhile_.insert(putMeanwhile_.end(), tasks.begin(), tasks.end());
}

void KnownTasks::changed() {
    readAt_.reset();
    ++changes_;
    hasChanged_ = true;
}

void KnownTasks::finish() {
    patience_.reset();
    for (const auto& waiting : std::exchange(waiting_, {})) waiting.resolve(true);
}

Task<void> KnownTasks::ready(std::shared_ptr<KnownTasks> self) {
    if (self->isStale() && !self->isReading_) read(self).detach();
    if (!self->isReading_ || (self->isKnown_ && !self->hasChanged_)) co_return;
    if (self->waiting_.empty()) {
        self->patience_ = MainLoopTimer(self->isKnown_ ? changePatience : patience, [weak = self->weak_from_this()] {
            if (const auto known = weak.lock()) known->finish();
        });
    }
    const Deferred<bool> waiting;
    self->waiting_.push_back(waiting);
    co_await waiting;
}

Task<void> KnownTasks::read(std::shared_ptr<KnownTasks> self) {
    const auto epoch = self->epoch_;
    const auto changes = self->changes_;
    self->isReading_ = true;
    auto connecting = self->session_.client();
    const auto api = co_await connecting;
    std::vector<TaskSummary> tasks;
    std::vector<BoardEntity> boards;
    bool isRead = false;
    if (api) {
        auto listing = api->send<TasksResponse>(Endpoint::tasks());
        auto asking = api->send<BoardsResponse>(Endpoint::boards());
        auto listed = co_await listing;
        auto answered = co_await asking;
        isRead = listed && answered;
        if (isRead) {
            tasks = std::move(listed->tasks);
            for (Board& board : answered->boards) boards.push_back({std::move(board.id), std::move(board.name)});
        }
    }
    if (isRead && tasks.size() >= longList) {
        std::unordered_set<std::string> seen;
        for (const TaskSummary& task : tasks) seen.insert(task.id);
        for (std::size_t i = 0; i < std::min(boards.size(), mostBoards); ++i) {
            auto listing = api->send<TasksResponse>(Endpoint::tasks({.board = boards[i].id}));
            auto listed = co_await listing;
            if (!listed || epoch != self->epoch_ || tasks.size() >= TaskIndex::mostTasks) break;
            for (TaskSummary& task : listed->tasks) {
                if (seen.insert(task.id).second) tasks.push_back(std::move(task));
            }
        }
    }
    if (epoch != self->epoch_) co_return;  // another link is in force, and another reading on its way
    self->isReading_ = false;
    if (isRead) {
        self->index_.replace(tasks, std::move(boards));
        for (const TaskSummary& task : self->putMeanwhile_) self->index_.put(task);
        self->isKnown_ = true;
        if (changes == self->changes_) {
            self->readAt_ = self->session_.clock().now();
            self->hasChanged_ = false;
        }
    } else {
        self->failedAt_ = self->session_.clock().now();
    }
    self->putMeanwhile_.clear();
    self->finish();
}

}  // namespace parvela
