#include "Tray/TimerTitle.h"

namespace parvela {
namespace {

using namespace std::chrono_literals;

TEST(TimerTitle, showsTheTaskAndWhatHasElapsed) {
    const struct {
        std::chrono::milliseconds elapsed;
        const char* title;
        std::chrono::milliseconds next;
    } cases[] = {
        {0ms, " TSK-42 0:00", 1000ms},
        {999ms, " TSK-42 0:00", 1ms},
        {247s, " TSK-42 4:07", 1000ms},
        {59min + 59s + 400ms, " TSK-42 59:59", 600ms},
        {1h, " TSK-42 1:00:00", 1000ms},
        {1h + 4min + 7s, " TSK-42 1:04:07", 1000ms},
        {100h + 59s, " TSK-42 100:00:59", 1000ms},
        {-1ms, " TSK-42 0:00", 1ms},
        {-90s, " TSK-42 0:00", 1000ms},
        {std::chrono::hours(24 * 365 * 300000LL), " TSK-42 2628000000:00:00", 1000ms},
    };
    for (const auto& one : cases) {
        const Instant now{std::chrono::sys_days(std::chrono::year(2026) / 6 / 13) + 12h};
        const TimerInfo timer{.taskKey = "TSK-42", .taskTitle = "Write brief", .startedAt = now - one.elapsed};
        EXPECT_EQ(timerTitle(timer, now), one.title);
        EXPECT_EQ(untilNextTitle(timer, now), one.next) << one.title;
    }
}

}  // namespace
}  // namespace parvela
