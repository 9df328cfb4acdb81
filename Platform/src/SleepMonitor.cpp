#include <Platform/DBus.h>
#include <Platform/MainLoop.h>
#include <Platform/SleepMonitor.h>

#include <chrono>
#include <ctime>
#include <utility>

namespace parvela {

namespace {

const dbus::Address manager{"org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"};

constexpr auto checkInterval = std::chrono::seconds(15);
constexpr auto shortestSleep = std::chrono::seconds(2);

/// How long the machine slept since it started: the time that only one of the clocks counts.
std::chrono::nanoseconds sleptSoFar() {
    const auto read = [](clockid_t clock) {
        timespec time{};
        clock_gettime(clock, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    return read(CLOCK_BOOTTIME) - read(CLOCK_MONOTONIC);
}

}  // namespace

class SleepMonitor::Impl : public std::enable_shared_from_this<Impl> {
public:
    explicit Impl(std::function<void()> onWake) : onWake_(std::move(onWake)) {}

    static Task<void> start(std::shared_ptr<Impl> self) {
        auto connecting = dbus::connect(G_BUS_TYPE_SYSTEM);
        auto bus = co_await connecting;
        if (!self->onWake_) co_return;
        if (!bus) {
            self->watchClocks();
            co_return;
        }
        self->bus_ = std::move(bus);
        const std::weak_ptr<Impl> weak = self;
        self->signal_ = dbus::SignalSubscription(self->bus_, manager, "PrepareForSleep", [weak](GVariant* values) {
            gboolean goesToSleep = TRUE;
            if (g_variant_is_of_type(values, G_VARIANT_TYPE("(b)"))) g_variant_get(values, "(b)", &goesToSleep);
            if (const auto alive = weak.lock(); alive && !goesToSleep) alive->wake();
        });
        self->watch_ = dbus::NameWatch(self->bus_, manager.name, [weak](const std::string& owner) {
            const auto alive = weak.lock();
            if (!alive) return;
            if (owner.empty()) {
                alive->watchClocks();
            } else {
                alive->clocks_.reset();
            }
        });
    }

    void close() {
        onWake_ = nullptr;
        clocks_.reset();
    }

private:
    void wake() {
        const auto onWake = onWake_;
        if (onWake) onWake();
    }

    void watchClocks() {
        slept_ = sleptSoFar();
        clocks_ = MainLoopTimer(
            checkInterval,
            [weak = weak_from_this()] {
                const auto self = weak.lock();
                if (!self) return;
                const auto slept = sleptSoFar();
                if (slept - std::exchange(self->slept_, slept) >= shortestSleep) self->wake();
            },
            MainLoopTimer::Kind::repeating);
    }

    std::function<void()> onWake_;
    dbus::Bus bus_;
    dbus::SignalSubscription signal_;
    dbus::NameWatch watch_;
    std::chrono::nanoseconds slept_{};
    MainLoopTimer clocks_;
};

SleepMonitor::SleepMonitor(std::function<void()> onWake) : impl_(std::make_shared<Impl>(std::move(onWake))) {
    Impl::start(impl_).detach();
}

SleepMonitor::~SleepMonitor() {
    impl_->close();
}

}  // namespace parvela
