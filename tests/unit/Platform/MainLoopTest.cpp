#include <Platform/MainLoop.h>
#include <Platform/WallClockAlarm.h>

#include <atomic>
#include <chrono>
#include <stop_token>
#include <thread>

namespace parvela {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

Task<std::string> waitAndSay(std::chrono::milliseconds time, std::string word) {
    auto sleeping = sleepFor(time);
    co_await sleeping;
    co_return word;
}

TEST(MainLoop, waitsForTheTaskAndGivesItsResult) {
    const auto start = Clock::now();
    EXPECT_EQ(runUntilDone(waitAndSay(20ms, "done")), "done");
    EXPECT_GE(Clock::now() - start, 20ms);
}

TEST(MainLoop, aStopRequestFromAnyThreadEndsASleep) {
    std::stop_source stop;
    std::jthread other([&stop] { stop.request_stop(); });
    const auto start = Clock::now();
    runUntilDone(sleepFor(1h, stop.get_token()));
    runUntilDone(sleepFor(1h, stop.get_token()));
    EXPECT_LT(Clock::now() - start, 1min);
}

TEST(MainLoop, timersRepeatUntilTakenBackEvenByThemselves) {
    int repeated = 0;
    MainLoopTimer repeating;
    repeating = MainLoopTimer(
        1ms,
        [&] {
            if (++repeated == 3) repeating.reset();
        },
        MainLoopTimer::Kind::repeating);
    bool calledAfterReset = false;
    MainLoopTimer takenBack(1ms, [&] { calledAfterReset = true; });
    takenBack.reset();
    int once = 0;
    const MainLoopTimer single(2ms, [&] { ++once; });
    while (repeating.isActive() || single.isActive()) g_main_context_iteration(nullptr, TRUE);
    runUntilDone(sleepFor(5ms));
    EXPECT_EQ(repeated, 3);
    EXPECT_EQ(once, 1);
    EXPECT_FALSE(calledAfterReset);
}

TEST(MainLoop, aStopWatchThatIsGoneHearsNothing) {
    std::stop_source stop;
    int heard = 0;
    const StopWatch kept(stop.get_token(), [&] { ++heard; });
    {
        const StopWatch dropped(stop.get_token(), [&] { heard += 100; });
        stop.request_stop();
    }
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_EQ(heard, 1);
}

TEST(WallClockAlarm, goesOffOnceAndInTime) {
    const auto now = [] { return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now()); };
    int calls = 0;
    auto past = setWallClockAlarm(now() - 1h, [&] { ++calls; });
    const Instant moment = now() + 30ms;
    std::optional<Instant> called;
    auto future = setWallClockAlarm(moment, [&] { called = now(); });
    auto takenBack = setWallClockAlarm(now() - 1h, [&] { calls += 100; });
    takenBack = {};
    const auto distant = setWallClockAlarm(now() + std::chrono::years(10), [&] { calls += 100; });
    while (!called) g_main_context_iteration(nullptr, TRUE);
    EXPECT_GE(*called, moment);
    EXPECT_EQ(calls, 1);
}

TEST(WallClockAlarm, itsActionMaySetItAgain) {
    int calls = 0;
    Subscription alarm;
    std::function<void()> again = [&] {
        if (++calls < 3) alarm = setWallClockAlarm(Instant{}, again);
    };
    again();
    while (calls < 3) g_main_context_iteration(nullptr, TRUE);
    EXPECT_EQ(calls, 3);
}

}  // namespace
}  // namespace parvela
