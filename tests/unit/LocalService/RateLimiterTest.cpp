#include "Http/RateLimiter.h"
#include "support/FakeClock.h"

namespace parvela::service {
namespace {

using namespace std::chrono_literals;

TEST(RateLimiter, allowsABurstThenAnEvenFlow) {
    parvela::test::FakeClock clock;
    RateLimiter limiter(clock, {.burst = 3, .perMinute = 6});
    for (int use = 0; use < 3; ++use) EXPECT_EQ(limiter.take("robin"), std::nullopt);
    EXPECT_EQ(limiter.take("robin"), 10);
    EXPECT_EQ(limiter.take("rosa"), std::nullopt);  // somebody else is not held up
    clock.advance(9'500ms);
    EXPECT_EQ(limiter.take("robin"), 1);  // never "0 seconds"
    clock.advance(500ms);
    EXPECT_EQ(limiter.wait("robin"), std::nullopt);
    EXPECT_EQ(limiter.take("robin"), std::nullopt);
    EXPECT_EQ(limiter.take("robin"), 10);
    limiter.forget("robin");
    EXPECT_EQ(limiter.take("robin"), std::nullopt);
}

TEST(RateLimiter, savesUpNoMoreThanItsBurst) {
    parvela::test::FakeClock clock;
    RateLimiter limiter(clock, {.burst = 2, .perMinute = 60});
    limiter.take("robin");
    clock.advance(1h);
    EXPECT_EQ(limiter.take("robin"), std::nullopt);
    EXPECT_EQ(limiter.take("robin"), std::nullopt);
    EXPECT_EQ(limiter.take("robin"), 1);
}

TEST(RateLimiter, keepsCountingWhileManyNamesComeAndGo) {
    parvela::test::FakeClock clock;
    RateLimiter limiter(clock, {.burst = 1, .perMinute = 1});
    limiter.take("robin");
    for (int name = 0; name < 10'000; ++name) limiter.wait(std::to_string(name));
    EXPECT_NE(limiter.take("robin"), std::nullopt);
}

TEST(RateLimiter, survivesAClockThatGoesBack) {
    parvela::test::FakeClock clock;
    RateLimiter limiter(clock, {.burst = 1, .perMinute = 60});
    limiter.take("robin");
    clock.advance(-1h);
    EXPECT_EQ(limiter.take("robin"), 1);
    clock.advance(1s);
    EXPECT_EQ(limiter.take("robin"), std::nullopt);
}

}  // namespace
}  // namespace parvela::service
