#include <ParvelaKit/TaskIndex.h>

#include <fmt/format.h>

namespace parvela {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> keys(const TaskIndex& index, std::string_view search, std::size_t most = 10) {
    std::vector<std::string> found;
    for (const auto* entry : index.tasks(search, most)) found.push_back(entry->key);
    return found;
}

TEST(TaskIndex, findsTheBestMatchesFirst) {
    TaskIndex index;
    index.replace(
        {{.key = "TSK-1", .title = "Rewrite the brief", .board = "Work"},
         {.key = "TSK-2", .title = "Call the writer", .board = "Work", .dueDate = "2026-06-12"},
         {.key = "TSK-3", .title = "Write brief", .board = "Zoë's list"},
         {.key = "TSK-4", .title = "Call a writer", .board = "Work", .dueDate = "2026-06-11"},
         {.key = "TSK-5", .title = "Call some writer", .board = "Work", .dueDate = "2026-06-10", .done = true},
         {.key = "TSK-33", .title = "ＺＥＢＲＡ crossing", .board = "Home"}},
        {{"b1", "Work"}, {"b2", "Zoë's list"}});
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"write", {"TSK-3", "TSK-4", "TSK-2", "TSK-5", "TSK-1"}},
        {"BRIEF write", {"TSK-3", "TSK-1"}},
        {"zoe", {"TSK-3"}},
        {"zebra", {"TSK-33"}},
        {"tsk-3", {"TSK-3", "TSK-33"}},
        {"work call", {"TSK-4", "TSK-2", "TSK-5"}},
        {"nothing like it", {}},
        {"", {}},
        {" \t", {}},
        {"\xFF", {}},
    };
    for (const auto& [search, expected] : cases) EXPECT_EQ(keys(index, search), expected) << search;

    EXPECT_EQ(keys(index, "call", 1), std::vector<std::string>{"TSK-4"});
    ASSERT_EQ(index.boards("zoë", 5).size(), 1U);
    EXPECT_EQ(index.boards("zoë", 5).front()->id, "b2");
    EXPECT_EQ(index.task("TSK-2")->title, "Call the writer");
    EXPECT_EQ(index.task("TSK-9"), nullptr);
    EXPECT_EQ(index.board("b1")->name, "Work");
    index.put({.key = "TSK-4", .title = "Call a writer", .board = "Work", .done = true});
    index.put({.key = "TSK-6", .title = "Call the office", .board = "Work", .dueDate = "2026-06-10"});
    EXPECT_EQ(keys(index, "call"), (std::vector<std::string>{"TSK-6", "TSK-2", "TSK-5", "TSK-4"}));
    index.clear();
    EXPECT_EQ(index.board("b1"), nullptr);
    EXPECT_EQ(keys(index, "write"), std::vector<std::string>{});
}

TEST(TaskIndex, staysWithinItsLimits) {
    std::vector<TaskSummary> many(TaskIndex::mostTasks + 10, TaskSummary{.key = "TSK-1", .title = "Task"});
    many.front().title = std::string(TaskIndex::longestTitle - 1, 'a') + "éb";
    TaskIndex index;
    index.replace(many, {});
    EXPECT_EQ(index.size(), TaskIndex::mostTasks);
    EXPECT_EQ(index.tasks("aaa", 1).front()->title, std::string(TaskIndex::longestTitle - 1, 'a'));
    EXPECT_TRUE(index.tasks(std::string(TaskIndex::longestSearch + 1, 'a'), 1).empty());
}

}  // namespace
}  // namespace parvela
