#include "ServiceFixture.h"

#include <algorithm>

namespace parvela::service {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::UnorderedElementsAre;
using Case = APIError::Case;

class ApiTest : public test::ServiceTest {
protected:
    ApiTest()
        : robin(join("Robin Hale")),
          rosa(join("Rosa Diaz")),
          board(makeBoard(robin, "Launch", {{"color", "#3b82f6"}, {"description", "Go"}})),
          api(client(robin)) {
        for (const char* label : {"Design", "Design Review"}) {
            robin.call("POST", "/api/boards/" + board + "/labels", {{"name", label}, {"tone", "purple"}});
        }
    }

    static std::vector<std::string> keys(const std::vector<TaskSummary>& tasks) {
        std::vector<std::string> keys;
        for (const TaskSummary& task : tasks) keys.push_back(task.key);
        return keys;
    }

    std::vector<std::string> list(const TaskListOptions& options) {
        return keys(answer<TasksResponse>(api, Endpoint::tasks(options)).tasks);
    }

    std::string dueTask(const char* date, nlohmann::json more = nlohmann::json::object()) {
        more["due_date"] = date;
        return makeTask(robin, board, std::string("due ") + date, std::move(more));
    }

    void finish(const std::string& key) {
        answer<TaskSummary>(api, Endpoint::updateTask(key, TaskPatch{.done = true}));
    }

    template <class T>
    Case failure(const ParvelaAPI& with, const Endpoint& endpoint) {
        const auto result = ask<T>(with, endpoint);
        EXPECT_FALSE(result.has_value());
        return result ? Case::server : result.error().error()->kind();
    }

    test::Browser robin, rosa;
    std::string board;
    ParvelaAPI api;
};

TEST_F(ApiTest, everyCallAnswersWithItsRecord) {
    const auto me = answer<Me>(api, Endpoint::me());
    EXPECT_EQ(me.name, "Robin Hale");
    ASSERT_TRUE(me.workspace);
    EXPECT_EQ(me.workspace->name, "Robin Hale's workspace");

    const auto boards = answer<BoardsResponse>(api, Endpoint::boards());
    ASSERT_EQ(boards.boards.size(), 1U);
    EXPECT_EQ(boards.boards[0].colorHex, "#3B82F6");
    EXPECT_EQ(boards.boards[0].lists.size(), 3U);
    EXPECT_EQ(boards.workspaces[0].role, "owner");

    const NewTask task{.board = board,
                       .title = "Write brief",
                       .description = "Short.",
                       .assignees = {{"rosa"}},
                       .dueDate = "2026-06-10",
                       .dueTime = "15:00",
                       .priority = "high",
                       .labels = {{"design"}}};
    const auto created = answer<TaskSummary>(api, Endpoint::createTask(task));
    EXPECT_EQ(created.key, "TSK-1");
    EXPECT_EQ(created.url, "/t/TSK-1");
    EXPECT_EQ(created.assignees, std::vector<std::string>{"Rosa Diaz"});
    EXPECT_EQ(created.labelTags->at(0).tone, "purple");
    EXPECT_EQ(answer<TaskSummary>(api, Endpoint::task("TSK-1")), created);
    EXPECT_EQ(answer<TaskSummary>(api, Endpoint::task(created.id)), created);

    const auto detail = answer<BoardDetail>(api, Endpoint::board(board));
    EXPECT_EQ(detail.lists[0].open, 1);
    EXPECT_EQ(detail.completionListId, detail.lists[2].id);
    EXPECT_EQ(detail.people.size(), 2U);
    const auto summary = answer<BoardSummary>(api, Endpoint::boardSummary(board));
    EXPECT_EQ(summary.open, 1);
    EXPECT_EQ(summary.dueThisWeek, 1);
    EXPECT_EQ(answer<PeopleResponse>(api, Endpoint::people()).people.size(), 2U);

    const auto rosasApi = client(rosa);
    const auto home = answer<HomeData>(rosasApi, Endpoint::home());
    EXPECT_EQ(home.counts.today, 1);
    EXPECT_EQ(keys(home.dueToday), std::vector<std::string>{"TSK-1"});
    EXPECT_EQ(home.unread, 1);
    EXPECT_EQ(keys(answer<SearchResponse>(api, Endpoint::search("brie", std::nullopt)).results),
              std::vector<std::string>{"TSK-1"});

    const auto comment = answer<CommentResponse>(rosasApi, Endpoint::addComment("TSK-1", {.body = "On it."}));
    EXPECT_TRUE(comment.posted);
    const auto checklist = robin.call("POST", "/api/tasks/TSK-1/checklists", {{"title", "Steps"}});
    const auto item =
        robin.call("POST", "/api/checklists/" + checklist.at("id").get<std::string>() + "/items", {{"text", "Draft"}});
    answer<OKResponse>(api, Endpoint::tickChecklistItem("TSK-1", {.item = item.at("id"), .done = true}));
    const auto full = answer<TaskDetail>(api, Endpoint::taskDetail("TSK-1"));
    EXPECT_EQ(full.comments.at(0).author.name, "Rosa Diaz");
    EXPECT_FALSE(full.comments.at(0).mine);
    EXPECT_TRUE(full.checklists.at(0).items.at(0).done);
    EXPECT_EQ(full.createdBy, "Robin Hale");
    EXPECT_TRUE(full.canEdit);

    const auto inbox = answer<NotificationsResponse>(api, Endpoint::notifications());
    ASSERT_EQ(inbox.items.size(), 1U);
    EXPECT_EQ(inbox.items[0].kind, "comment");
    EXPECT_EQ(inbox.items[0].task->key, "TSK-1");
    answer<OKResponse>(api, Endpoint::markNotifications({.ids = {inbox.items[0].id}, .all = false, .read = true}));
    EXPECT_EQ(answer<NotificationsResponse>(api, Endpoint::notifications(1)).unread, 0);
    answer<OKResponse>(api, Endpoint::markNotifications({.ids = {}, .all = true, .read = false}));
    EXPECT_EQ(answer<NotificationsResponse>(api, Endpoint::notifications()).unread, 1);

    const PushRegistration push{
        .platform = "macos", .token = "abc", .environment = PushRegistration::Environment::sandbox, .bundleId = "app"};
    EXPECT_EQ(answer<OKResponse>(api, Endpoint::registerPush(push)).ok, true);
    EXPECT_EQ(answer<OKResponse>(api, Endpoint::unregisterPush({.token = "abc"})).ok, true);
    EXPECT_EQ(answer<OKResponse>(api, Endpoint::revokeToken()).ok, true);
    EXPECT_EQ(failure<Me>(api, Endpoint::me()), Case::unauthorized);
}

TEST_F(ApiTest, dueListsFollowThePersonsDay) {
    const std::string overdue = dueTask("2026-06-08");
    const std::string today = dueTask("2026-06-10", {{"due_time", "18:00"}});
    const std::string earlier = dueTask("2026-06-10", {{"due_time", "08:00"}});
    const std::string inSix = dueTask("2026-06-16");
    dueTask("2026-06-17");
    makeTask(robin, board, "no date");
    const std::string doneToday = dueTask("2026-06-10");
    const std::string doneOverdue = dueTask("2026-06-09");
    const std::string doneLater = dueTask("2026-06-14");
    for (const auto& key : {doneToday, doneOverdue, doneLater}) finish(key);

    EXPECT_EQ(answer<TasksResponse>(api, Endpoint::tasks()).today, "2026-06-10");
    EXPECT_THAT(list({.due = DueFilter::overdue}), ElementsAre(overdue));
    // Overdue first, then by time; what was ticked off today stays, so that a tick can be taken back.
    const auto dueToday = list({.due = DueFilter::today});
    EXPECT_THAT((std::vector(dueToday.begin(), dueToday.begin() + 3)), ElementsAre(overdue, earlier, today));
    EXPECT_THAT((std::vector(dueToday.begin() + 3, dueToday.end())), UnorderedElementsAre(doneToday, doneOverdue));
    EXPECT_THAT(list({.due = DueFilter::week}), ElementsAre(overdue, earlier, today, inSix));
    EXPECT_THAT(list({.due = DueFilter::week, .board = board, .includeDone = true}),
                ElementsAre(overdue, earlier, today, inSix, doneToday, doneLater));
    EXPECT_EQ(list({}).size(), 6U);
    EXPECT_EQ(list({.includeDone = true}).size(), 9U);

    // Four hours before midnight in UTC it is already tomorrow in Auckland, and still this morning in Honolulu.
    clock.advance(11h);
    auto aroha = join("Aroha Ngata", "Pacific/Auckland");
    auto keola = join("Keola Kahale", "Pacific/Honolulu");
    const auto auckland = client(aroha);
    const auto honolulu = client(keola);
    EXPECT_EQ(answer<TasksResponse>(auckland, Endpoint::tasks()).today, "2026-06-11");
    EXPECT_EQ(answer<TasksResponse>(honolulu, Endpoint::tasks()).today, "2026-06-10");
    EXPECT_THAT(keys(answer<TasksResponse>(auckland, Endpoint::tasks({.due = DueFilter::overdue})).tasks),
                ElementsAre(overdue, earlier, today));
    EXPECT_EQ(answer<HomeData>(auckland, Endpoint::home()).today, "2026-06-11");

    // The day after, yesterday's ticks are gone from "today".
    clock.advance(12h);
    EXPECT_THAT(list({.due = DueFilter::today}), ElementsAre(overdue, earlier, today));
}

TEST_F(ApiTest, myTasksAreThoseAssignedToMe) {
    const std::string mine = dueTask("2026-06-10", {{"assignees", {"robin"}}});
    dueTask("2026-06-10", {{"assignees", {"rosa"}}});
    const std::string done = dueTask("2026-06-10", {{"assignees", {"robin", "rosa"}}});
    finish(done);
    const std::string later = dueTask("2026-07-10", {{"assignees", {"robin"}}});
    EXPECT_THAT(list({.mine = true}), ElementsAre(mine, later));
    EXPECT_THAT(list({.mine = true, .includeDone = true}), ElementsAre(mine, later, done));
    EXPECT_THAT(list({.mine = true, .due = DueFilter::today}), ElementsAre(mine, done));
    EXPECT_THAT(list({.mine = true, .due = DueFilter::week, .includeDone = true}), ElementsAre(mine, done));
    EXPECT_THAT(list({.mine = true, .board = makeBoard(robin, "Empty")}), IsEmpty());
}

TEST_F(ApiTest, unresolvedNamesAreMarkedAndCreateNothing) {
    const std::string secret = makeBoard(robin, "Secret", {{"private", true}});
    join("Robert Lang");
    const struct {
        const char* wording;
        nlohmann::json body;
    } rows[] = {
        {"has no label", {{"board", board}, {"labels", {"Design", "nope"}}}},
        {"No one called", {{"board", board}, {"assignees", {"nobody"}}}},
        {"matches more than one person", {{"board", board}, {"assignees", {"rob"}}}},
        {"can't see the", {{"board", secret}, {"assignees", {"rosa"}}}},
    };
    for (auto [wording, body] : rows) {
        body["title"] = "T";
        const auto created = robin.send("POST", "/api/v1/tasks", body.dump());
        EXPECT_EQ(created.status, 400) << wording;
        EXPECT_THAT(created.body, HasSubstr(wording));
        const auto viaKit =
            ask<TaskSummary>(api, Endpoint{.method = "POST", .path = {"tasks"}, .query = {}, .body = body.dump()});
        EXPECT_TRUE(viaKit.error().error()->isUnresolvedReference()) << wording;
    }
    EXPECT_THAT(list({}), IsEmpty());

    // An edit that fails changes nothing either.
    const std::string key = makeTask(robin, board, "Before");
    EXPECT_EQ(robin.status("PATCH", "/api/v1/tasks/" + key, {{"title", "After"}, {"labels", {"nope"}}}), 400);
    EXPECT_EQ(answer<TaskSummary>(api, Endpoint::task(key)).title, "Before");
}

TEST_F(ApiTest, editsSetKeepAndClear) {
    const std::string key =
        dueTask("2026-06-12", {{"due_time", "09:00"}, {"assignees", {"rosa"}}, {"labels", {"design"}}});
    const auto edit = [&](const TaskEdit& change) {
        return answer<TaskSummary>(api, Endpoint::updateTask(key, change));
    };
    EXPECT_EQ(edit({}).dueTime, "09:00");
    auto task = edit({.title = Patch<std::string>::set("Renamed"),
                      .priority = Patch<std::string>::set("urgent"),
                      .dueTime = Patch<std::string>::clear(),
                      .labels = Patch<std::vector<std::string>>::set({"design_review"})});
    EXPECT_EQ(task.title, "Renamed");
    EXPECT_EQ(task.priority, "urgent");
    EXPECT_EQ(task.dueDate, "2026-06-12");
    EXPECT_EQ(task.dueTime, std::nullopt);
    EXPECT_EQ(task.labels, std::vector<std::string>{"Design Review"});
    task = edit({.priority = Patch<std::string>::clear(),
                 .dueDate = Patch<std::string>::clear(),
                 .dueTime = Patch<std::string>::set("10:00"),
                 .assignees = Patch<std::vector<std::string>>::clear()});
    EXPECT_EQ(task.priority, "none");
    EXPECT_EQ(task.dueDate, std::nullopt);
    EXPECT_EQ(task.dueTime, std::nullopt);  // no time without a day
    EXPECT_THAT(task.assignees, IsEmpty());

    // Done moves into the completion list and back to where it was.
    const std::string progress = listId(robin, board, "In progress");
    EXPECT_EQ(edit({.list = Patch<std::string>::set(progress)}).list, "In progress");
    task = edit({.done = Patch<bool>::set(true)});
    EXPECT_TRUE(task.done);
    EXPECT_EQ(task.list, "Done");
    EXPECT_EQ(edit({.done = Patch<bool>::set(false)}).list, "In progress");
    EXPECT_TRUE(edit({.list = Patch<std::string>::set("done")}).done);
    EXPECT_FALSE(edit({.list = Patch<std::string>::set("To do")}).done);
}

TEST_F(ApiTest, refusalsCarryTheRightStatus) {
    const std::string key = makeTask(robin, board, "T");
    const auto readOnly = client(robin, false);
    EXPECT_EQ(answer<TasksResponse>(readOnly, Endpoint::tasks()).tasks.size(), 1U);
    EXPECT_FALSE(answer<TaskDetail>(readOnly, Endpoint::taskDetail(key)).canEdit);
    for (const Endpoint& write :
         {Endpoint::createTask({.board = board, .title = "T"}), Endpoint::addComment(key, {.body = "x"}),
          Endpoint::updateTask(key, TaskPatch{.done = true})}) {
        const auto refused = ask<OKResponse>(readOnly, write);
        ASSERT_FALSE(refused.has_value());
        EXPECT_EQ(refused.error().error()->message(), "This token can't do that. Use a token with write access.");
    }
    EXPECT_EQ(answer<OKResponse>(readOnly, Endpoint::revokeToken()).ok, true);

    const Endpoint missing[] = {Endpoint::task("TSK-99"),
                                Endpoint::task("nonsense"),
                                Endpoint::task("tsk_01"),
                                Endpoint::task("TSK-1/detail"),
                                Endpoint::taskDetail("TSK-0"),
                                Endpoint::board("brd_99"),
                                Endpoint::board("1"),
                                Endpoint::boardSummary("lst_1"),
                                Endpoint::tasks({.board = "brd_99"}),
                                Endpoint::createTask({.board = "brd_99", .title = "T"}),
                                Endpoint::tickChecklistItem(key, {.item = "itm_9", .done = true}),
                                Endpoint::task("TSK-99999999999999999999")};
    for (const Endpoint& endpoint : missing)
        EXPECT_EQ(failure<TaskSummary>(api, endpoint), Case::notFound) << endpoint.path.back();

    const auto body = [&](nlohmann::json fields) {
        fields.emplace("board", board);
        fields.emplace("title", "T");
        return fields;
    };
    const nlohmann::json invalid[] = {
        body({{"title", "  "}}),
        body({{"title", 7}}),
        body({{"due_date", "2026-02-30"}}),
        body({{"due_date", "tomorrow"}}),
        body({{"due_time", "24:00"}}),
        body({{"due_time", "9:00"}}),
        body({{"priority", "extreme"}}),
        body({{"labels", "Design"}}),
        body({{"assignees", {1}}}),
        body({{"list", "Nowhere"}}),
        body({{"title", std::string(501, 'x')}}),
        body({{"title", std::string("a\0b", 3)}}),
        body({{"title", "two\nlines"}}),
        body({{"title", nullptr}}),
    };
    for (const auto& fields : invalid) EXPECT_EQ(robin.status("POST", "/api/v1/tasks", fields), 422) << fields.dump();
    for (const char* text : {"{\"board", "[]", "\"x\"", "{\"title\":\"\xff\"}", "{} trailing"}) {
        EXPECT_EQ(robin.send("POST", "/api/v1/tasks", text).status, 400) << text;
    }
    EXPECT_EQ(robin.send("POST", "/api/v1/tasks", std::string(500'000, '[')).status, 400);
    EXPECT_EQ(robin.send("POST", "/api/v1/tasks", std::string((1U << 20) + 1, ' ')).status, 413);
    EXPECT_EQ(robin.status("GET", "/api/v1/tasks?due=yesterday"), 400);
    EXPECT_EQ(robin.status("GET", "/api/v1/tasks?limit=-1"), 400);
    const auto wrongMethod = robin.send("DELETE", "/api/v1/tasks");
    EXPECT_EQ(wrongMethod.status, 405);
    EXPECT_EQ(wrongMethod.header("Allow"), "GET, POST");
    EXPECT_EQ(list({}).size(), 1U);
}

TEST_F(ApiTest, longListsEndAndSaySo) {
    for (int i = 0; i < 5; ++i) makeTask(robin, board, "T");
    const auto part = robin.fetch("/api/v1/tasks?limit=3");
    EXPECT_EQ(part.at("tasks").size(), 3U);
    EXPECT_TRUE(part.at("more"));
    EXPECT_FALSE(robin.fetch("/api/v1/tasks?limit=5").at("more"));
}

TEST_F(ApiTest, tooManyRequestsAreAskedToWait) {
    start({.requestsPerMinute = 30});
    auto mina = join("Mina Park");
    const auto token = client(mina);
    Result<Me, APIFailure> last = ask<Me>(token, Endpoint::me());
    for (int i = 0; i < 40 && last; ++i) last = ask<Me>(token, Endpoint::me());
    ASSERT_FALSE(last.has_value());
    EXPECT_EQ(last.error().error()->kind(), Case::rateLimited);
    EXPECT_EQ(last.error().error()->retryAfter(), 2);
    clock.advance(2s);
    EXPECT_EQ(answer<Me>(token, Endpoint::me()).name, "Mina Park");
}

TEST_F(ApiTest, tokensAreCheckedWholeAndTheirUseIsNotedSparingly) {
    ParvelaAPI wrong = api;
    wrong.token = "tk_wrong";
    EXPECT_EQ(failure<Me>(wrong, Endpoint::me()), Case::unauthorized);
    const auto lastUsed = [&] {
        return robin.fetch("/api/tokens").at("tokens").at(0).at("last_used_at").get<double>();
    };
    answer<Me>(api, Endpoint::me());
    const double first = lastUsed();
    clock.advance(30s);
    answer<Me>(api, Endpoint::me());
    EXPECT_EQ(lastUsed(), first);
    clock.advance(31s);
    answer<Me>(api, Endpoint::me());
    EXPECT_EQ(lastUsed(), first + 61'000);

    // Only what the token's hash is made of opens the door: nothing in the database is a token.
    auto rows = service->backend().stores.database.query("SELECT hex(hash) || hint || name FROM tokens");
    ASSERT_TRUE(rows.step());
    EXPECT_THAT(rows.text(0), ::testing::Not(HasSubstr(api.token)));
    const std::string id = robin.fetch("/api/tokens").at("tokens").at(0).at("id");
    EXPECT_EQ(rosa.status("DELETE", "/api/tokens/" + id), 404);  // not hers
    EXPECT_EQ(robin.status("DELETE", "/api/tokens/" + id), 200);
    EXPECT_EQ(failure<Me>(api, Endpoint::me()), Case::unauthorized);
}

TEST_F(ApiTest, searchTakesAnyTextAsWordsToLookFor) {
    const std::string open = makeTask(robin, board, "Größe des Zauns prüfen", {{"description", "AND NOT \"quoted\""}});
    const std::string done = makeTask(robin, board, "Zaun streichen");
    finish(done);
    const std::string gone = makeTask(robin, board, "Zaun vergessen");
    robin.call("DELETE", "/api/tasks/" + gone);
    const auto found = [&](const char* text) {
        return keys(answer<SearchResponse>(api, Endpoint::search(text, 10)).results);
    };
    EXPECT_THAT(found("zaun"), ElementsAre(open, done));  // open ones first
    EXPECT_THAT(found("ZAUN stre"), ElementsAre(done));
    EXPECT_THAT(found("prufen zauns"), ElementsAre(open));  // accents do not matter, nor does the order
    EXPECT_THAT(found("tsk-2"), ElementsAre(done));
    for (const char* hostile :
         {"\"", "*", "zaun OR", "title:zaun", "NEAR(a b)", "(", "' OR 1=1 --", "", "   ", "^", "a\"b"}) {
        EXPECT_TRUE(ask<SearchResponse>(api, Endpoint::search(hostile, 5)).has_value()) << hostile;
    }
    EXPECT_THAT(found("and not"), ElementsAre(open));  // words, not operators
}

}  // namespace
}  // namespace parvela::service
