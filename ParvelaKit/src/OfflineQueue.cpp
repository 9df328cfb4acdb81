#include "Queue/QueueMachine.h"

#include <ParvelaKit/OfflineQueue.h>

#include <utility>

namespace parvela {

OfflineQueue::OfflineQueue(Environment environment) : machine_(std::make_shared<Machine>(std::move(environment))) {
}

OfflineQueue::~OfflineQueue() {
    machine_->close();
}

const Observable<OfflineQueueStatus>& OfflineQueue::status() const {
    return machine_->status;
}

std::vector<QueuedLine> OfflineQueue::lines(std::size_t count, std::size_t offset) const {
    return machine_->lines(count, offset);
}

Task<Result<QuickAddReceipt, QuickAddFailure>> OfflineQueue::submit(QuickAddSubmission submission,
                                                                    std::string boardName, ParvelaAPI api,
                                                                    std::stop_token stop) {
    return Machine::submit(machine_, std::move(submission), std::move(boardName), std::move(api), std::move(stop));
}

void OfflineQueue::setClient(std::optional<ParvelaAPI> api) {
    machine_->setClient(std::move(api));
}

void OfflineQueue::retryNow() {
    machine_->retryNow();
}

bool OfflineQueue::retry(std::int64_t id) {
    return machine_->retryFailed(id);
}

void OfflineQueue::retryAllFailed() {
    (void)machine_->retryFailed(std::nullopt);
}

bool OfflineQueue::discard(std::int64_t id) {
    return machine_->discard(id);
}

}  // namespace parvela
