#pragma once

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Transport.h>
#include <ParvelaKit/Url.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>

#include <gio/gio.h>

namespace parvela {

/// While a page cannot be reached: finds out when its server answers again, by asking it now and then and whenever the
/// network changes. Asks for nothing but the header of the page, without credentials.
class PageRetry {
public:
    /// `onReachable` is called once, from the main loop, and may destroy this object.
    PageRetry(Url url, Transport transport, std::function<void()> onReachable);
    PageRetry(const PageRetry&) = delete;
    PageRetry& operator=(const PageRetry&) = delete;
    ~PageRetry();

    static constexpr std::chrono::milliseconds firstDelay{2000};
    static constexpr std::chrono::milliseconds longestDelay{30000};
    /// The wait after a failed attempt that came after `delay`.
    static std::chrono::milliseconds nextDelay(std::chrono::milliseconds delay);

private:
    struct State;
    static void schedule(const std::shared_ptr<State>& state, std::chrono::milliseconds delay);
    static Task<void> ask(std::shared_ptr<State> state);

    std::shared_ptr<State> state_;
    Connection networkChanged_;
};

}  // namespace parvela
