#include "AtomicFile.h"

#include <Platform/MainLoop.h>
#include <Platform/WallClockAlarm.h>

#include <chrono>
#include <memory>
#include <sys/timerfd.h>
#include <utility>

#include <glib-unix.h>

namespace parvela {

namespace {

class Alarm {
public:
    Alarm(Instant moment, std::function<void()> action)
        : action_(std::move(action)), timer_(timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)) {
        const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
        const auto rest = std::chrono::nanoseconds(moment - seconds);
        itimerspec setting{};
        setting.it_value.tv_sec = std::max<time_t>(seconds.time_since_epoch().count(), 0);
        setting.it_value.tv_nsec = std::max<long>(rest.count(), 1);  // zero would switch it off
        if (!timer_ ||
            timerfd_settime(timer_.get(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &setting, nullptr) != 0) {
            // Without the kernel's timer a plain one has to do.
            const auto left = moment - std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
            fallback_ = MainLoopTimer(left, [this] { fire(); });
            return;
        }
        // Becomes readable both at the moment and when the clock is set.
        source_ = g_unix_fd_add(
            timer_.get(), G_IO_IN,
            [](int, GIOCondition, gpointer data) -> gboolean {
                auto* const alarm = static_cast<Alarm*>(data);
                alarm->source_ = 0;
                alarm->fire();
                return G_SOURCE_REMOVE;
            },
            this);
    }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
    ~Alarm() {
        if (source_ != 0) g_source_remove(source_);
    }

private:
    /// The action may drop this alarm.
    void fire() {
        const auto action = std::move(action_);
        action();
    }

    std::function<void()> action_;
    FileDescriptor timer_;
    guint source_ = 0;
    MainLoopTimer fallback_;
};

}  // namespace

Subscription setWallClockAlarm(Instant moment, std::function<void()> action) {
    return Subscription(std::make_shared<Alarm>(moment, std::move(action)));
}

}  // namespace parvela
