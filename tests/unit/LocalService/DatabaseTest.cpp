#include "Domain/Stores.h"
#include "ServiceFixture.h"
#include "Store/Database.h"
#include "support/TemporaryFolder.h"

#include <chrono>
#include <filesystem>
#include <fstream>

namespace parvela::service {
namespace {

class DatabaseTest : public ::testing::Test {
protected:
    static std::int64_t number(Database& database, const char* sql) {
        auto row = database.query(sql);
        return row.step() ? row.integer(0) : -1;
    }

    parvela::test::TemporaryFolder temporary;
    const std::filesystem::path folder = temporary.path();
    parvela::test::FakeClock clock;
    test::CountingRandom random;
};

TEST_F(DatabaseTest, bringsEveryOlderVersionToTheCurrentOneWithItsData) {
    for (int version = 1; version <= currentSchemaVersion(); ++version) {
        const auto file = folder / std::to_string(version);
        {
            Database old(file, version);
            EXPECT_EQ(number(old, "PRAGMA user_version"), version);
            old.runScript(
                "INSERT INTO accounts VALUES (1, 'Robin', 'r@example.org', '', '#000000', 'owner', NULL, 0);"
                "INSERT INTO boards(id, name, position, created_at) VALUES (1, 'Board', 1, 0);"
                "INSERT INTO lists(id, board_id, name, position) VALUES (1, 1, 'List', 1);"
                "INSERT INTO tasks(board_id, list_id, title, position, created_at) VALUES (1, 1, 'Paint the fence', 1, "
                "0);");
        }
        Database current(file);
        EXPECT_EQ(number(current, "PRAGMA user_version"), currentSchemaVersion());
        TaskQueries queries(current);
        EXPECT_EQ(queries.search(PersonId{1}, "fence", 10), std::vector{TaskId{1}}) << "from version " << version;
        EXPECT_EQ(number(current, "SELECT open_count FROM lists"), 1);
        EXPECT_EQ(number(current, "SELECT count(*) FROM pragma_integrity_check WHERE integrity_check <> 'ok'"), 0);
    }
}

TEST_F(DatabaseTest, refusesFilesThatItCannotUnderstand) {
    const auto newer = folder / "newer";
    {
        Database(newer).runScript("PRAGMA user_version = 99");
    }
    EXPECT_THROW(Database{newer}, std::runtime_error);

    const auto garbage = folder / "garbage";
    std::ofstream(garbage) << std::string(8192, 'x');
    EXPECT_THROW(Database{garbage}, DatabaseError);
    EXPECT_THROW(Database{folder / "missing" / "file"}, DatabaseError);
}

TEST_F(DatabaseTest, keepsNothingOfATransactionThatWasNotCommitted) {
    Database database(":memory:");
    const auto insert = [&] { database.run("INSERT INTO workspace VALUES (1, 'W', 0)"); };
    {
        Transaction transaction(database);
        insert();
    }
    EXPECT_EQ(number(database, "SELECT count(*) FROM workspace"), 0);
    {
        Transaction outer(database);
        insert();
        {
            Transaction inner(database);
        }
        EXPECT_THROW(outer.commit(), std::logic_error);
    }
    EXPECT_EQ(number(database, "SELECT count(*) FROM workspace"), 0);
    {
        Transaction outer(database);
        Transaction inner(database);
        insert();
        inner.commit();
        outer.commit();
    }
    EXPECT_EQ(number(database, "SELECT count(*) FROM workspace"), 1);
}

TEST_F(DatabaseTest, reportsALockThatAnotherProgramHolds) {
    const auto file = folder / "shared";
    Database database(file);
    Database other(file);
    Transaction held(other);
    other.run("INSERT INTO workspace VALUES (1, 'W', 0)");
    database.runScript("PRAGMA busy_timeout = 1");
    try {
        database.run("INSERT INTO workspace VALUES (1, 'V', 0)");
        FAIL() << "wrote past the lock";
    } catch (const DatabaseError& error) {
        EXPECT_TRUE(error.isBusy());
    }
}

TEST_F(DatabaseTest, holdsThePromisesOfItsReferences) {
    Database database(":memory:");
    EXPECT_THROW(database.run("INSERT INTO lists(board_id, name, position) VALUES (7, 'L', 1)"), DatabaseError);
    EXPECT_EQ(number(database, "PRAGMA foreign_keys"), 1);
}

TEST_F(DatabaseTest, keepsCountersAndAssignmentsInStepWithTheTasks) {
    Database database(":memory:");
    Stores stores(database, clock, random);
    const PersonId robin = stores.accounts.create({.name = "Robin", .email = "r@example.org", .role = "owner"});
    const BoardId board = stores.boards.create("Board", robin);
    const ListId first = stores.boards.addList(board, "First");
    const ListId second = stores.boards.addList(board, "Second");
    // Any sequence of changes must leave the copies as a fresh count would find them.
    std::vector<TaskId> tasks;
    for (int step = 0; step < 400; ++step) {
        if (tasks.size() < 5 || random.below(4) == 0) {
            tasks.push_back(stores.tasks.create({.board = board, .list = first, .title = "T", .creator = robin}));
            stores.tasks.setAssignees(tasks.back(), {robin});
        }
        const TaskId task = tasks[random.below(static_cast<std::uint32_t>(tasks.size()))];
        const auto sometimes = [&](auto value) { return random.below(2) ? std::optional(value) : std::nullopt; };
        switch (random.below(5)) {
            case 0:
                stores.tasks.setCompletion(task, sometimes(clock.now()), std::nullopt);
                break;
            case 1:
                stores.tasks.setDeletion(task, sometimes(clock.now()));
                break;
            case 2:
                stores.tasks.place(task, {.list = random.below(2) ? first : second});
                break;
            case 3:
                stores.tasks.setDue(task, sometimes(std::string("2026-06-10")), std::nullopt);
                break;
            default:
                database.run("DELETE FROM tasks WHERE id = ? AND id % 7 = 0", task);
                break;
        }
        ASSERT_EQ(
            number(database,
                   "SELECT count(*) FROM lists l WHERE total_count <> (SELECT count(*) FROM tasks t WHERE "
                   "t.list_id = l.id AND deleted_at IS NULL) OR open_count <> (SELECT count(*) FROM tasks t WHERE "
                   "t.list_id = l.id AND deleted_at IS NULL AND completed_at IS NULL)"),
            0)
            << "step " << step;
        ASSERT_EQ(number(database,
                         "SELECT count(*) FROM task_assignees a JOIN tasks t ON t.id = a.task_id WHERE "
                         "a.due_order IS NOT t.due_order OR a.completed_at IS NOT t.completed_at OR "
                         "a.deleted_at IS NOT t.deleted_at"),
                  0)
            << "step " << step;
        std::erase_if(tasks, [&](TaskId id) { return !stores.tasks.find(id, TaskStore::Deleted::included); });
    }
}

TEST_F(DatabaseTest, forgetsWhatWasDeletedLongAgo) {
    Database database(":memory:");
    Stores stores(database, clock, random);
    const PersonId robin = stores.accounts.create({.name = "Robin", .email = "r@example.org", .role = "owner"});
    const auto makeBoard = [&] {
        const BoardId board = stores.boards.create("Board", robin);
        const ListId list = stores.boards.addList(board, "List");
        stores.boards.setCompletionList(board, list);
        const TaskId task = stores.tasks.create({.board = board, .list = list, .title = "T", .creator = robin});
        stores.tasks.setAssignees(task, {robin});
        stores.files.add({.task = task, .creator = robin, .name = "f", .mime = "text/plain"}, "bytes");
        return std::pair(board, task);
    };
    const auto [keptBoard, keptTask] = makeBoard();
    const auto [oldBoard, oldTask] = makeBoard();
    const auto [liveBoard, deletedTask] = makeBoard();
    stores.boards.remove(oldBoard);
    stores.tasks.setDeletion(deletedTask, clock.now());
    clock.advance(std::chrono::hours(1));
    stores.tasks.setDeletion(keptTask, clock.now());

    stores.tasks.purgeDeletedBefore(clock.now());
    EXPECT_EQ(number(database, "SELECT count(*) FROM boards"), 2);
    EXPECT_EQ(number(database, "SELECT count(*) FROM tasks"), 1);
    EXPECT_EQ(number(database, "SELECT count(*) FROM file_contents"), 1);
    EXPECT_TRUE(stores.tasks.find(keptTask, TaskStore::Deleted::included));
    EXPECT_TRUE(stores.boards.find(liveBoard, robin));
    EXPECT_TRUE(stores.boards.find(keptBoard, robin));
}

}  // namespace
}  // namespace parvela::service
