#include "support/FakeSleep.h"
#include "support/LinkedDevice.h"
#include "support/TemporaryFolder.h"

#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/ParvelaIntents.h>
#include <ParvelaKit/Records.h>

namespace parvela {
namespace {

class ParvelaIntentsTest : public testing::Test, protected test::LinkedDevice {
protected:
    /// The dialog, or the error's text.
    template <class Intent>
    std::string perform(Intent intent) {
        auto task = intents_.perform(std::move(intent));
        EXPECT_TRUE(task.done());
        const auto result = std::move(task).result();
        return result ? result->dialog : result.error().message;
    }

    void answerTask(const TaskSummary& task) { network.answer("GET /api/v1/tasks/TSK-42", 200, json::encode(task)); }

    test::FakeSleep sleep_;
    test::TemporaryFolder folder_;
    OfflineQueue queue_{{.file = folder_.path() / "queue.db",
                         .clock = clock.get(),
                         .random = [] { return 0.5; },
                         .sleep = sleep_.function()}};
    std::vector<std::string> opened_;
    ParvelaIntents intents_{session(), queue_, [this](const Url& url) { opened_.push_back(url.text()); }};
};

TEST_F(ParvelaIntentsTest, addsATaskFromALineAndItsFields) {
    store->set("defaultBoardID", std::string("b9"));
    const struct {
        AddTaskIntent intent;
        const char* body;
    } cases[] = {
        {{.title = "Ship it tomorrow !low", .board = BoardEntity{"b1", "Work"}},
         R"({"board":"b1","due_date":"2026-06-11","priority":"low","title":"Ship it"})"},
        {{.title = "Ship it tomorrow !low", .dueDate = CivilDate{2026, 12, 1}, .priority = TaskPriorityOption::urgent},
         R"({"board":"b9","due_date":"2026-12-01","priority":"urgent","title":"Ship it"})"},
    };
    for (const auto& test : cases) {
        network.answer("POST /api/v1/tasks", 201, json::encode(TaskSummary{.key = "TSK-42", .title = "Ship it"}));
        EXPECT_EQ(perform(test.intent), "Added TSK-42: Ship it");
        EXPECT_EQ(network.requests().back().body, test.body);
    }
}

TEST_F(ParvelaIntentsTest, saysWhyATaskWasNotAdded) {
    EXPECT_EQ(perform(AddTaskIntent{.title = "Brief"}), "Pick a default board in Parvela Settings first.");
    const BoardEntity board{"b1", "Work"};
    EXPECT_EQ(perform(AddTaskIntent{.title = "tomorrow", .board = board}), "Give the task a title.");
    EXPECT_TRUE(network.requests().empty());

    network.answer("POST /api/v1/tasks", 404, R"({"error":{"message":"No such board."}})");
    EXPECT_EQ(perform(AddTaskIntent{.title = "Brief", .board = board}), "No such board.");
    network.fail("POST /api/v1/tasks", TransportError::unreachable);
    EXPECT_EQ(perform(AddTaskIntent{.title = "Brief", .board = board}),
              "Saved. It will be added when you are back online.");
    EXPECT_EQ(queue_.status().get().waiting, 1U);
}

TEST_F(ParvelaIntentsTest, namesAtMostFiveOpenTasksDueToday) {
    const std::pair<std::vector<TaskSummary>, const char*> cases[] = {
        {{}, "Nothing due today."},
        {{{.title = "A", .done = true}}, "Nothing due today."},
        {{{.title = "A", .done = true}, {.title = "B"}}, "1 task due today: B"},
        {{{.title = "A"}, {.title = "B"}}, "2 tasks due today: A; B"},
        {{{.title = "A"},
          {.title = "B"},
          {.title = "C"},
          {.title = "D"},
          {.title = "E"},
          {.title = "F"},
          {.title = "G"}},
         "7 tasks due today: A; B; C; D; E"},
    };
    for (const auto& [tasks, dialog] : cases) {
        network.answer("GET /api/v1/tasks?due=today", 200, json::encode(TasksResponse{.tasks = tasks}));
        EXPECT_EQ(perform(ShowTasksDueTodayIntent{}), dialog);
    }
}

TEST_F(ParvelaIntentsTest, opensATasksPageInTheWebAppOnly) {
    answerTask({.url = "/t/TSK-42"});
    EXPECT_EQ(perform(OpenTaskIntent{"TSK-42"}), "Open TSK-42");
    EXPECT_EQ(opened_, std::vector<std::string>{"http://localhost:3100/t/TSK-42"});
    for (const char* url : {"https://evil.test/t/1", "//evil.test", "javascript:alert(1)", "file:///etc/passwd"}) {
        answerTask({.url = url});
        EXPECT_EQ(perform(OpenTaskIntent{"TSK-42"}), APIError::invalidResponse().message()) << url;
    }
    answerTask({.key = "TSK-42"});
    EXPECT_EQ(perform(OpenTaskIntent{"TSK-42"}), "Open TSK-42");
    EXPECT_EQ(opened_.back(), "http://localhost:3100/t/TSK-42") << "its own place, when the service names none";
    network.answer("GET /api/v1/tasks/TSK-42", 404);
    EXPECT_EQ(perform(OpenTaskIntent{"TSK-42"}), "Not found.");
    EXPECT_EQ(opened_.size(), 2U);
}

TEST_F(ParvelaIntentsTest, completesATaskEvenWhenItIsDone) {
    for (const bool done : {false, true}) {
        answerTask({.title = "Brief", .done = done});
        network.answer("PATCH /api/v1/tasks/TSK-42", 200, json::encode(TaskSummary{.title = "Renamed", .done = true}));
        EXPECT_EQ(perform(CompleteTaskIntent{"TSK-42"}), "Done: Brief");
        EXPECT_EQ(network.requests().back().body, R"({"done":true})");
    }
    answerTask({.title = "Brief"});
    network.answer("PATCH /api/v1/tasks/TSK-42", 403);
    EXPECT_EQ(perform(CompleteTaskIntent{"TSK-42"}), APIError::forbidden("").message());
}

TEST_F(ParvelaIntentsTest, findsBoardsByTheirIds) {
    const BoardsResponse boards{.boards = {{.id = "b1", .name = "Work"}, {.id = "b2", .name = "Home"}}};
    for (int i = 0; i < 2; ++i) network.answer("GET /api/v1/boards", 200, json::encode(boards));
    EXPECT_EQ(*intents_.suggestedBoards().result(), (std::vector<BoardEntity>{{"b1", "Work"}, {"b2", "Home"}}));
    EXPECT_EQ(*intents_.boards({"b2", "gone"}).result(), (std::vector<BoardEntity>{{"b2", "Home"}}));
}

TEST_F(ParvelaIntentsTest, worksOnlyWithAToken) {
    unlink();
    const std::string missing = APIError::missingToken().message();
    EXPECT_EQ(perform(AddTaskIntent{.title = "Brief"}), missing);
    EXPECT_EQ(perform(ShowTasksDueTodayIntent{}), missing);
    EXPECT_EQ(perform(OpenTaskIntent{"TSK-42"}), missing);
    EXPECT_EQ(perform(CompleteTaskIntent{"TSK-42"}), missing);
    EXPECT_TRUE(intents_.suggestedBoards().result()->empty());
    EXPECT_TRUE(network.requests().empty());

    secrets->fail("read", SecretStatus::locked);
    EXPECT_EQ(perform(ShowTasksDueTodayIntent{}), noTokenText(SecretStatus::locked));
    EXPECT_EQ(intents_.suggestedBoards().result().error().name(), "NotLinked");
}

TEST(ParvelaIntents, areDescribedForTools) {
    std::string lines;
    for (const IntentDescription& intent : ParvelaIntents::descriptions()) {
        lines += std::string(intent.title) + ":";
        for (const IntentParameter& parameter : intent.parameters) {
            lines += " " + std::string(parameter.title) + (parameter.isOptional ? "?" : "");
        }
        for (const std::string& phrase : intent.phrasesFor("Parvela")) lines += "\n  " + phrase;
        lines += "\n";
    }
    EXPECT_EQ(lines,
              "Add Task: Title Board? Due Date? Priority?\n"
              "  Add a task in Parvela\n  New Parvela task\n  Add a task to Parvela\n  Quick add in Parvela\n"
              "Show Tasks Due Today:\n"
              "  What's due today in Parvela\n  Show my Parvela tasks due today\n"
              "Open Task: Task Key\n  Open a task in Parvela\n"
              "Complete Task: Task Key\n  Complete a task in Parvela\n  Mark a Parvela task done\n");
    EXPECT_EQ(TaskPriorityOptions::fromRawValue("high"), TaskPriorityOption::high);
    EXPECT_EQ(TaskPriorityOptions::fromRawValue("none"), std::nullopt);
    EXPECT_EQ(TaskPriorityOptions::displayName(TaskPriorityOption::urgent), "Urgent");
}

}  // namespace
}  // namespace parvela
