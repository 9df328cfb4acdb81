#include "Domain/Stores.h"
#include "ServiceFixture.h"

#include <algorithm>

namespace parvela::service {
namespace {

class TaskOrder : public ::testing::Test {
protected:
    TaskOrder() {
        robin = stores.accounts.create({.name = "Robin", .email = "r@example.org", .role = "owner"});
        board = stores.boards.create("Board", robin);
        first = stores.boards.addList(board, "First");
        second = stores.boards.addList(board, "Second");
    }

    TaskId add(ListId list) {
        return stores.tasks.create({.board = board, .list = list, .title = "T", .creator = robin});
    }

    std::vector<TaskId> order(ListId list) {
        std::vector<TaskId> ids;
        auto rows = database.query("SELECT id FROM tasks WHERE list_id = ? ORDER BY position, id", list);
        while (rows.step()) ids.push_back(rows.id<TaskId>(0));
        return ids;
    }

    Database database{":memory:"};
    parvela::test::FakeClock clock;
    test::CountingRandom random;
    Stores stores{database, clock, random};
    PersonId robin;
    BoardId board;
    ListId first, second;
};

TEST_F(TaskOrder, isWhatTheMovesAskFor) {
    // The same moves on a plain vector must give the same order, however often the gaps run out.
    std::vector<TaskId> expected;
    for (int i = 0; i < 12; ++i) expected.push_back(add(first));
    for (int move = 0; move < 600; ++move) {
        const auto pick = [&] { return expected[random.below(static_cast<std::uint32_t>(expected.size()))]; };
        // Most moves aim at the same two neighbours, which uses up the room between them.
        const TaskId moved = pick();
        const TaskId neighbour = random.below(4) ? expected[5] : pick();
        if (moved == neighbour) continue;
        const bool before = random.below(2) == 0;
        stores.tasks.place(moved, before ? TaskStore::Place{.list = first, .before = neighbour}
                                         : TaskStore::Place{.list = first, .after = neighbour});
        std::erase(expected, moved);
        const auto at = std::ranges::find(expected, neighbour);
        expected.insert(before ? at : at + 1, moved);
        ASSERT_EQ(order(first), expected) << "move " << move;
    }
}

TEST_F(TaskOrder, survivesMovesThatLostARace) {
    const TaskId a = add(first), b = add(first), c = add(first), other = add(second);
    // Two windows move at once: when the second move arrives, its neighbour is in another list, deleted, or the task
    // itself.
    stores.tasks.place(b, {.list = second});
    stores.tasks.place(a, {.list = first, .before = b});
    EXPECT_EQ(order(first), (std::vector{c, a}));
    EXPECT_EQ(order(second), (std::vector{other, b}));
    stores.tasks.setDeletion(c, clock.now());
    stores.tasks.place(b, {.list = first, .before = c, .after = a});
    EXPECT_EQ(order(first), (std::vector{c, a, b}));
    stores.tasks.place(a, {.list = first, .before = a});
    EXPECT_EQ(order(first), (std::vector{c, b, a}));
    stores.tasks.place(a, {.list = second, .before = TaskId{999}, .after = other});
    EXPECT_EQ(order(second), (std::vector{other, a}));
}

}  // namespace
}  // namespace parvela::service
