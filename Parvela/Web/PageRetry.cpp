#include "Web/PageRetry.h"

#include <Platform/MainLoop.h>

#include <algorithm>
#include <utility>

namespace parvela {

namespace {

/// Networks come up in several steps, each announced.
constexpr std::chrono::milliseconds networkSettles{400};

}  // namespace

struct PageRetry::State {
    Url url;
    Transport transport;
    std::function<void()> onReachable;
    std::stop_source stop;
    std::chrono::milliseconds delay = firstDelay;
    MainLoopTimer timer;
    bool asking = false;
};

PageRetry::PageRetry(Url url, Transport transport, std::function<void()> onReachable)
    : state_(std::make_shared<State>(State{std::move(url), std::move(transport), std::move(onReachable)})),
      networkChanged_(connect<void(GNetworkMonitor*, gboolean)>(g_network_monitor_get_default(), "network-changed",
                                                                [this](GNetworkMonitor*, gboolean available) {
                                                                    if (!available) return;
                                                                    state_->delay = firstDelay;
                                                                    schedule(state_, networkSettles);
                                                                })) {
    schedule(state_, state_->delay);
}

PageRetry::~PageRetry() {
    state_->timer.reset();
    state_->onReachable = nullptr;
    state_->stop.request_stop();
}

std::chrono::milliseconds PageRetry::nextDelay(std::chrono::milliseconds delay) {
    return std::min(delay * 2, longestDelay);
}

void PageRetry::schedule(const std::shared_ptr<State>& state, std::chrono::milliseconds delay) {
    state->timer = MainLoopTimer(delay, [weak = std::weak_ptr(state)] {
        const auto alive = weak.lock();
        if (alive && !alive->asking) ask(alive).detach();
    });
}

Task<void> PageRetry::ask(std::shared_ptr<State> state) {
    state->asking = true;
    HttpRequest request{.method = "HEAD", .url = state->url, .timeout = std::chrono::seconds{8}};
    auto sending = state->transport(std::move(request), state->stop.get_token());
    const auto answer = co_await sending;
    state->asking = false;
    if (!state->onReachable) co_return;
    if (answer) {
        const auto call = std::exchange(state->onReachable, nullptr);
        call();
        co_return;
    }
    state->delay = nextDelay(state->delay);
    schedule(state, state->delay);
}

}  // namespace parvela
