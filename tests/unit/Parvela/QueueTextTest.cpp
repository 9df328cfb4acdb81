#include "QuickAdd/QueueText.h"

using namespace parvela;
using namespace std::chrono_literals;

TEST(QueueText, saysHowManyLinesThereAreAndWhenTheyAreTried) {
    const Instant now{1000s};
    const struct {
        OfflineQueueStatus status;
        std::string expected;
    } cases[] = {
        {{}, ""},
        {{.waiting = 1}, "1 waiting"},
        {{.waiting = 3, .nextTry = now + 4'001ms}, "3 waiting, next try in 5 s"},
        {{.waiting = 3, .nextTry = now + 60s}, "3 waiting, next try in 60 s"},
        {{.waiting = 3, .nextTry = now + 61s}, "3 waiting, next try in 2 min"},
        {{.waiting = 3, .nextTry = now - 1s}, "3 waiting, next try now"},
        {{.waiting = 2, .sending = 1, .nextTry = now + 5s}, "1 being sent · 2 waiting"},
        {{.waiting = 2, .failed = 10'000, .nextTry = now + 5s}, "10000 failed · 2 waiting, next try in 5 s"},
    };
    for (const auto& [status, expected] : cases) EXPECT_EQ(queueText(status, now), expected);
}
