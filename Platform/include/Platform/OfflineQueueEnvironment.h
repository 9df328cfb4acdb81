#pragma once

#include <ParvelaKit/OfflineQueue.h>

namespace parvela {

/// Where this machine keeps the lines that wait, and how its queue sleeps: the same for every program of Parvela.
/// `clock` must outlive the queue.
OfflineQueue::Environment offlineQueueEnvironment(const Clock& clock);

}  // namespace parvela
