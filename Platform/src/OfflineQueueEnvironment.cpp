#include <Platform/MainLoop.h>
#include <Platform/OfflineQueueEnvironment.h>
#include <Platform/XdgPaths.h>

#include <random>

namespace parvela {

OfflineQueue::Environment offlineQueueEnvironment(const Clock& clock) {
    return {
        .file = XdgPaths::current().data / "waiting-lines.sqlite",
        .clock = &clock,
        .random =
            [generator = std::mt19937(std::random_device{}())]() mutable {
                return std::uniform_real_distribution<double>(0, 1)(generator);
            },
        .sleep = sleepFor,
    };
}

}  // namespace parvela
