#pragma once

#include "Model/AppModel.h"

#include <ParvelaKit/Clock.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/OfflineQueue.h>
#include <ParvelaKit/Task.h>
#include <Platform/MainLoop.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace parvela {

/// Sends the quick-add lines that were kept while the service could not be reached, whichever program kept them: at the
/// start, when the device is linked, when the network comes back, and by the queue's own pauses.
///
/// Held by a shared pointer, because reading the token may end after the application wants to be rid of it.
class WaitingLines : public std::enable_shared_from_this<WaitingLines> {
public:
    /// `report` is told in one sentence what became of lines that waited. `clock` must live as long as the process.
    WaitingLines(std::shared_ptr<AppModel> model, std::shared_ptr<const Clock> clock,
                 std::function<void(const std::string&)> report);

    /// Uses the token that is stored now, and tries every line with it.
    Task<void> renewClient();
    /// Tries every line now: the network is back, or another program has kept a line.
    void tryNow() { queue_.retryNow(); }
    /// For sending new lines, and for showing and changing those that wait.
    OfflineQueue& queue() noexcept { return queue_; }

private:
    void statusChanged(const OfflineQueueStatus& status);

    std::shared_ptr<AppModel> model_;
    std::shared_ptr<const Clock> clock_;
    std::function<void(const std::string&)> report_;
    OfflineQueue queue_;
    OfflineQueueStatus seen_;
    bool haveWaited_ = false;  ///< lines that are not added yet
    Subscription status_;
    Connection network_;
    MainLoopTimer networkSettles_;
    std::uint64_t renewals_ = 0;
};

}  // namespace parvela
