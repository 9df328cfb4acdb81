#include <ParvelaKit/Task.h>

namespace parvela {
namespace {

Task<int> immediate(int value) {
    co_return value;
}

Task<int> plusOne(Deferred<int> input) {
    const int value = co_await input;
    co_return value + 1;
}

Task<void> store(Deferred<int> input, std::shared_ptr<int> target) {
    auto task = plusOne(input);
    *target = co_await task;
}

Task<int> sumUpTo(int count) {
    int sum = 0;
    for (int i = 1; i <= count; ++i) {
        auto task = immediate(1);
        sum += co_await task;
    }
    co_return sum;
}

TEST(Task, runsOnAndFreesItsFrameWhenDropped) {
    const auto target = std::make_shared<int>(0);
    const Deferred<int> input;
    store(input, target).detach();
    EXPECT_EQ(target.use_count(), 2);
    input.resolve(1);
    EXPECT_EQ(*target, 2);
    EXPECT_EQ(target.use_count(), 1);
}

TEST(Task, aLateSecondResultIsIgnored) {
    const auto target = std::make_shared<int>(0);
    const Deferred<int> input;
    auto task = store(input, target);
    input.resolve(1);
    input.resolve(5);
    EXPECT_EQ(*target, 2);
}

TEST(Task, awaitingManyFinishedTasksNeedsNoStack) {
    auto task = sumUpTo(300'000);
    EXPECT_EQ(std::move(task).result(), 300'000);
}

}  // namespace
}  // namespace parvela
