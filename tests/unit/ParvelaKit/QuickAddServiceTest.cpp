#include "support/FakeTransport.h"

#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/QuickAddService.h>

namespace parvela {
namespace {

using test::FakeTransport;

constexpr const char* createTask = "POST /api/v1/tasks";

constexpr CivilDate friday{2026, 6, 12};

ParvelaAPI client(const FakeTransport& script) {
    return {*Url::parse("https://x.example"), "tk_1", script.transport()};
}

std::string created(std::string_view title) {
    return json::encode(TaskSummary{.id = "t1", .key = "TSK-1", .title = std::string(title)});
}

std::string refused(std::string_view message) {
    return R"({"error":{"message":")" + std::string(message) + R"("}})";
}

Result<QuickAddService::Outcome, QuickAddFailure> run(QuickAddSubmission submission, const FakeTransport& script) {
    submission.board = "b1";
    submission.today = friday;
    auto task = QuickAddService::create(std::move(submission), client(script));
    EXPECT_TRUE(task.done());
    return std::move(task).result();
}

TEST(QuickAddService, sendsWhatTheLineAndTheFieldsSay) {
    const struct {
        QuickAddSubmission submission;
        const char* body;
    } cases[] = {
        {{.line = "Write brief tomorrow 5pm !high @Robin #ux"},
         R"({"assignees":["robin"],"board":"b1","due_date":"2026-06-13","due_time":"17:00","labels":["ux"],)"
         R"("priority":"high","title":"Write brief"})"},
        {{.line = "Just a title"}, R"({"board":"b1","priority":"none","title":"Just a title"})"},
        {{.line = "Ship it tomorrow !low", .dueDate = "2026-07-01", .priority = QuickAddPriority::urgent},
         R"({"board":"b1","due_date":"2026-07-01","priority":"urgent","title":"Ship it"})"},
        {{.line = "Shared page", .description = "https://x.example/a"},
         R"({"board":"b1","description":"https://x.example/a","priority":"none","title":"Shared page"})"},
        {{.line = "Call @rob about #ux", .members = {{{"p7", "Robin Hood", {}}}}, .labels = {{{"l7", "UX"}}}},
         R"({"assignees":["p7"],"board":"b1","labels":["l7"],"priority":"none","title":"Call about"})"},
        {{.line = "Read tomorrow", .literalRanges = {{5, 13}}},
         R"({"board":"b1","priority":"none","title":"Read tomorrow"})"},
    };
    for (const auto& test : cases) {
        FakeTransport script;
        script.answer(createTask, 201, created("x"));
        const auto outcome = run(test.submission, script);
        ASSERT_TRUE(outcome) << outcome.error().message();
        EXPECT_EQ(outcome->task.key, "TSK-1");
        EXPECT_EQ(outcome->note, std::nullopt);
        EXPECT_EQ(script.requests().back().body, test.body);
        EXPECT_EQ(script.requests().back().url.text(), "https://x.example/api/v1/tasks");
    }
}

TEST(QuickAddService, needsATitle) {
    for (const char* line : {"", "   ", "tomorrow !high", "#ux @robin"}) {
        FakeTransport script;
        const auto outcome = run({.line = line}, script);
        ASSERT_FALSE(outcome) << line;
        EXPECT_TRUE(outcome.error().isEmptyTitle());
        EXPECT_EQ(outcome.error().message(), "Give the task a title.");
        EXPECT_TRUE(script.requests().empty());
    }
}

TEST(QuickAddService, saysThatARepeatRuleIsNotSent) {
    FakeTransport script;
    script.answer(createTask, 201, created("Call Sam"));
    const auto outcome = run({.line = "Call Sam every monday"}, script);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->note, "Repeat rules can't be set from quick add \u2014 set the repeat in Parvela.");
    EXPECT_EQ(script.requests().back().body,
              R"({"board":"b1","due_date":"2026-06-15","priority":"none","title":"Call Sam"})");
}

TEST(QuickAddService, leavesUnresolvedNamesInTheTitleOnce) {
    const struct {
        int secondStatus;
        std::string secondBody;
        const char* ending;
    } cases[] = {
        {201, created("x"), "The board has no label \u201cux\u201d. Left it in the title."},
        {422, refused("No one called Sam."), "No one called Sam."},
        {500, "", "Parvela had a problem (HTTP 500). Try again."},
    };
    for (const auto& test : cases) {
        FakeTransport script;
        script.answer(createTask, 422, refused("The board has no label \u201cux\u201d."));
        script.answer(createTask, test.secondStatus, test.secondBody);
        const auto outcome = run({.line = "Fix menu #ux @sam daily 9am"}, script);
        EXPECT_EQ(outcome ? outcome->note.value_or("") : outcome.error().message(), test.ending);
        ASSERT_EQ(script.requests().size(), 2U);
        const auto retried = json::decode<NewTask>(*script.requests().back().body);
        ASSERT_TRUE(retried);
        EXPECT_EQ(retried->title, "Fix menu #ux @sam");
        EXPECT_EQ(retried->dueTime, "09:00");
        EXPECT_EQ(retried->labels, std::nullopt);
        EXPECT_EQ(retried->assignees, std::nullopt);
    }
}

TEST(QuickAddService, passesOtherFailuresOnUnchanged) {
    const std::pair<int, APIError> cases[] = {
        {403, APIError::forbidden("has no label")},
        {422, APIError::badRequest("The title is too long.")},
        {404, APIError::notFound("")},
    };
    for (const auto& [status, error] : cases) {
        FakeTransport script;
        script.answer(createTask, status, refused(error.serverMessage()));
        const auto outcome = run({.line = "Fix #ux"}, script);
        ASSERT_FALSE(outcome);
        EXPECT_EQ(outcome.error(), QuickAddFailure(error));
        EXPECT_EQ(script.requests().size(), 1U);
    }
    FakeTransport cancelled;
    cancelled.fail(createTask, TransportError::cancelled);
    const auto outcome = run({.line = "Fix"}, cancelled);
    ASSERT_FALSE(outcome);
    EXPECT_TRUE(outcome.error().apiFailure()->isCancelled());
    EXPECT_EQ(outcome.error().message(), "");
}

}  // namespace
}  // namespace parvela
