#include "ServiceFixture.h"

namespace parvela::service {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class WebAppTest : public test::ServiceTest {
protected:
    WebAppTest() : robin(join("Robin Hale")), rosa(join("Rosa Diaz")), board(makeBoard(robin, "Launch")) {}

    std::vector<std::string> order(const std::string& list) {
        const auto full = robin.fetch("/api/boards/" + board + "/full");
        std::vector<std::pair<double, std::string>> cards;
        for (const auto& card : full.at("tasks")) {
            if (card.at("list") == list) cards.emplace_back(card.at("position"), card.at("title"));
        }
        std::ranges::sort(cards);
        std::vector<std::string> titles;
        for (const auto& [position, title] : cards) titles.push_back(title);
        return titles;
    }

    test::Browser robin, rosa;
    std::string board;
};

TEST_F(WebAppTest, privateBoardsDoNotExistForOthers) {
    const std::string secret = makeBoard(robin, "Secret", {{"private", true}});
    const std::string task = makeTask(robin, secret, "Surprise party");
    const auto file = robin.send("POST", "/api/tasks/" + task + "/files?name=a.txt", "bytes");
    const std::string url = nlohmann::json::parse(file.body).at("url");
    const std::string comment =
        robin.call("POST", "/api/v1/tasks/" + task + "/comments", {{"body", "x"}}).at("comment_id");
    const std::string list = listId(robin, secret, "To do");
    const std::string checklist = robin.call("POST", "/api/tasks/" + task + "/checklists", {{"title", "C"}}).at("id");
    const struct {
        const char* method;
        std::string path;
    } rows[] = {{"GET", "/api/v1/boards/" + secret},
                {"GET", "/api/boards/" + secret + "/full"},
                {"PATCH", "/api/boards/" + secret},
                {"DELETE", "/api/boards/" + secret},
                {"GET", "/api/v1/tasks?board=" + secret},
                {"GET", "/api/v1/tasks/" + task},
                {"GET", "/api/v1/tasks/" + task + "/detail"},
                {"PATCH", "/api/v1/tasks/" + task},
                {"DELETE", "/api/tasks/" + task},
                {"POST", "/api/tasks/" + task + "/restore"},
                {"GET", url},
                {"DELETE", "/api/comments/" + comment},
                {"PATCH", "/api/lists/" + list},
                {"POST", "/api/checklists/" + checklist + "/items"},
                {"POST", "/api/tasks/" + task + "/timer"},
                {"POST", "/api/boards/" + secret + "/labels"}};
    for (const auto& [method, path] : rows) EXPECT_EQ(rosa.status(method, path), 404) << method << " " << path;
    EXPECT_TRUE(rosa.fetch("/api/v1/tasks?q=surprise").at("results").empty());
    EXPECT_TRUE(rosa.fetch("/api/v1/tasks").at("tasks").empty());
    EXPECT_EQ(rosa.fetch("/api/boards").at("boards").size(), 1U);
    EXPECT_EQ(robin.fetch("/api/v1/tasks?q=surprise").at("results").size(), 1U);
    EXPECT_EQ(robin.get(url).body, "bytes");
    // Opening the board lets everybody in.
    robin.call("PATCH", "/api/boards/" + secret, {{"private", false}});
    EXPECT_EQ(rosa.status("GET", "/api/v1/tasks/" + task), 200);
}

TEST_F(WebAppTest, boardsAreEditedAndKeepTheirLists) {
    const auto edited =
        robin.call("PATCH", "/api/boards/" + board,
                   {{"name", "Start"}, {"color", "#a1b2c3"}, {"section", "Work"}, {"starred", true}, {"icon", "🚀"}});
    EXPECT_EQ(edited.at("color"), "#A1B2C3");
    EXPECT_EQ(edited.at("starred"), true);
    EXPECT_EQ(rosa.fetch("/api/boards").at("boards").at(0).at("starred"), false);  // stars are personal
    EXPECT_TRUE(robin.call("PATCH", "/api/boards/" + board, {{"section", nullptr}}).at("section").is_null());
    EXPECT_EQ(robin.status("PATCH", "/api/boards/" + board, {{"color", "red"}}), 422);

    const std::string path = "/api/boards/" + board + "/lists";
    const std::string later = robin.call("POST", path, {{"name", "Later"}}).at("id");
    robin.call("PATCH", "/api/lists/" + later, {{"position", 0}, {"name", "Some day"}});
    const auto lists = robin.fetch("/api/v1/boards/" + board).at("lists");
    EXPECT_EQ(lists.at(0).at("name"), "Some day");
    const std::string task = makeTask(robin, board, "T", {{"list", later}});
    EXPECT_EQ(robin.status("DELETE", "/api/lists/" + later), 422);  // holds a task
    robin.call("DELETE", "/api/tasks/" + task);
    EXPECT_EQ(robin.status("DELETE", "/api/lists/" + later), 200);
    // The deleted task comes back on a list that still exists.
    EXPECT_EQ(robin.call("POST", "/api/tasks/" + task + "/restore").at("list"), "To do");
    for (const char* name : {"In progress", "Done"})
        EXPECT_EQ(robin.status("DELETE", "/api/lists/" + listId(robin, board, name)), 200);
    EXPECT_EQ(robin.status("DELETE", "/api/lists/" + listId(robin, board, "To do")), 422);  // the last one
    robin.call("DELETE", "/api/boards/" + board);
    EXPECT_EQ(robin.status("GET", "/api/v1/tasks/" + task), 404);
}

TEST_F(WebAppTest, labelsFollowTheirTasks) {
    const auto label = robin.call("POST", "/api/boards/" + board + "/labels", {{"name", "Design"}, {"tone", "teal"}});
    const std::string id = label.at("id");
    const std::string task = makeTask(robin, board, "T", {{"labels", {id}}});
    robin.call("PATCH", "/api/labels/" + id, {{"name", "Look"}});
    EXPECT_EQ(robin.fetch("/api/v1/tasks/" + task).at("labels").at(0), "Look");
    EXPECT_EQ(robin.status("PATCH", "/api/labels/" + id, {{"tone", "mauve"}}), 422);
    robin.call("DELETE", "/api/labels/" + id);
    EXPECT_TRUE(robin.fetch("/api/v1/tasks/" + task).at("labels").empty());
}

TEST_F(WebAppTest, draggingKeepsTheOrderThatWasSeen) {
    for (const char* title : {"A", "B", "C"}) makeTask(robin, board, title);
    const std::string list = listId(robin, board, "To do");
    robin.call("POST", "/api/tasks/TSK-3/move", {{"list", list}, {"before", "TSK-1"}});
    EXPECT_THAT(order("To do"), ElementsAre("C", "A", "B"));
    robin.call("POST", "/api/tasks/TSK-3/move", {{"list", list}, {"after", "TSK-1"}});
    EXPECT_THAT(order("To do"), ElementsAre("A", "C", "B"));
    const auto card = robin.call("POST", "/api/tasks/TSK-1/move", {{"list", listId(robin, board, "Done")}});
    EXPECT_EQ(card.at("done"), true);
    EXPECT_TRUE(card.contains("completed_at"));
    EXPECT_EQ(robin.status("POST", "/api/tasks/TSK-1/move", {{"list", "lst_99"}}), 422);
    // What was done long ago leaves the board page, not the workspace.
    clock.advance(24h * 29);
    EXPECT_THAT(order("Done"), ElementsAre("A"));
    clock.advance(48h);
    auto again = test::Browser(service->webOrigin());
    again.call("POST", "/api/session", {{"email", "robin@example.org"}, {"password", "correct horse"}});
    EXPECT_EQ(again.fetch("/api/boards/" + board + "/full").at("tasks").size(), 2U);
    EXPECT_EQ(again.fetch("/api/v1/tasks/TSK-1").at("done"), true);
}

TEST_F(WebAppTest, deletedTasksComeBackWhole) {
    const std::string task = makeTask(robin, board, "T", {{"assignees", {"robin"}}, {"due_date", "2026-06-10"}});
    robin.call("DELETE", "/api/tasks/" + task);
    EXPECT_EQ(robin.status("GET", "/api/v1/tasks/" + task), 404);
    EXPECT_EQ(robin.status("DELETE", "/api/tasks/" + task), 404);
    EXPECT_TRUE(robin.fetch("/api/v1/tasks?mine=1").at("tasks").empty());
    EXPECT_EQ(robin.fetch("/api/v1/home").at("counts").at("today"), 0);
    EXPECT_EQ(robin.call("POST", "/api/tasks/" + task + "/restore").at("due_date"), "2026-06-10");
    EXPECT_EQ(robin.status("POST", "/api/tasks/" + task + "/restore"), 200);  // once more changes nothing
    EXPECT_EQ(robin.fetch("/api/v1/tasks?mine=1").at("tasks").size(), 1U);
}

TEST_F(WebAppTest, tasksHaveSubtasksChecklistsAndComments) {
    const std::string task = makeTask(robin, board, "Parent");
    EXPECT_EQ(robin.call("POST", "/api/tasks/" + task + "/subtasks", {{"title", "Child"}}).at("key"), "TSK-2");
    const std::string list = robin.call("POST", "/api/tasks/" + task + "/checklists", {{"title", "Steps"}}).at("id");
    const std::string item = robin.call("POST", "/api/checklists/" + list + "/items", {{"text", "One"}}).at("id");
    robin.call("PATCH", "/api/items/" + item, {{"done", true}, {"text", "First"}});
    EXPECT_EQ(robin.fetch("/api/v1/tasks/" + task).at("checklist").at("done"), 1);
    robin.call("DELETE", "/api/items/" + item);
    EXPECT_EQ(robin.status("PATCH", "/api/items/" + item, {{"done", true}}), 404);
    robin.call("DELETE", "/api/checklists/" + list);

    const std::string comment =
        rosa.call("POST", "/api/v1/tasks/" + task + "/comments", {{"body", "Hey @robin, look"}}).at("comment_id");
    EXPECT_EQ(robin.status("PATCH", "/api/comments/" + comment, {{"body", "Hm"}}), 403);
    rosa.call("PATCH", "/api/comments/" + comment, {{"body", "Never mind"}});
    const auto detail = robin.fetch("/api/v1/tasks/" + task + "/detail");
    EXPECT_EQ(detail.at("comments").at(0).at("edited"), true);
    EXPECT_EQ(detail.at("subtasks").at(0).at("title"), "Child");
    EXPECT_TRUE(detail.at("checklists").empty());
    EXPECT_EQ(robin.fetch("/api/v1/tasks/TSK-2/detail").at("parent").at("key"), task);
    EXPECT_EQ(robin.fetch("/api/notifications?limit=1").at("items").at(0).at("kind"), "mention");
    rosa.call("DELETE", "/api/comments/" + comment);
    EXPECT_TRUE(robin.fetch("/api/v1/tasks/" + task + "/detail").at("comments").empty());
}

TEST_F(WebAppTest, oneTimerRunsForEachPersonAndItsTimeIsKept) {
    const std::string first = makeTask(robin, board, "First"), second = makeTask(robin, board, "Second");
    const auto timer = [&](const std::string& task, const char* state) {
        return robin.call("POST", "/api/tasks/" + task + "/timer", {{"state", state}}).at("timer");
    };
    const auto tracked = [&](const std::string& task) {
        return robin.fetch("/api/v1/tasks/" + task + "/detail").at("tracked_minutes").get<double>();
    };
    EXPECT_EQ(timer(first, "started").at("task_key"), first);
    clock.advance(10min);
    EXPECT_EQ(timer(first, "started").at("task_key"), first);  // goes on, does not begin anew
    EXPECT_EQ(timer(second, "started").at("task_key"), second);
    EXPECT_EQ(tracked(first), 10);
    clock.advance(90s);
    EXPECT_EQ(timer(first, "stopped").at("task_key"), second);  // not the one that runs
    EXPECT_EQ(rosa.fetch("/api/timer").at("timer"), nullptr);
    EXPECT_EQ(rosa.fetch("/api/v1/tasks/" + second + "/detail").at("timer").at("user_id"), "usr_1");
    robin.call("PATCH", "/api/v1/tasks/" + second, {{"done", true}});  // finished work stops its timer
    EXPECT_EQ(tracked(second), 1.5);
    EXPECT_EQ(robin.fetch("/api/timer").at("timer"), nullptr);
}

TEST_F(WebAppTest, filesAreSavedNeverRun) {
    const std::string task = makeTask(robin, board, "T");
    const struct {
        const char *sent, *name, *type, *shown;
    } cases[] = {{"photo.PNG", "photo.PNG", "image/png", "inline"},
                 {"page.html", "page.html", "text/html; charset=utf-8", "attachment"},
                 {"drawing.svg", "drawing.svg", "image/svg+xml", "attachment"},
                 {"..%2F..%2Fetc%2Fpasswd", "passwd", "application/octet-stream", "attachment"},
                 {"%0Aa%22b.txt", "a\"b.txt", "text/plain; charset=utf-8", "attachment"},
                 {"", "File", "application/octet-stream", "attachment"}};
    for (const auto& [sent, name, type, shown] : cases) {
        const auto uploaded =
            nlohmann::json::parse(robin.send("POST", "/api/tasks/" + task + "/files?name=" + sent, "<b>").body);
        EXPECT_EQ(uploaded.at("name"), name);
        const std::string url = uploaded.at("url");
        const auto saved = robin.get(url);
        EXPECT_EQ(saved.body, "<b>");
        EXPECT_EQ(saved.header("Content-Type"), type);
        EXPECT_THAT(saved.header("Content-Disposition").value_or(""), StartsWith("attachment; filename*=UTF-8''"));
        EXPECT_THAT(saved.header("Content-Security-Policy").value_or(""), HasSubstr("sandbox"));
        EXPECT_THAT(robin.get(url + "?inline=1").header("Content-Disposition").value_or(""), StartsWith(shown)) << name;
        EXPECT_EQ(test::Browser(service->webOrigin()).get(url).status, 401);
    }
    EXPECT_EQ(robin.fetch("/api/v1/tasks/" + task).at("files"), 6);
    const auto detail = robin.fetch("/api/v1/tasks/" + task + "/detail");
    robin.call("DELETE", "/api/files/" + detail.at("files").at(0).at("id").get<std::string>());
    EXPECT_EQ(robin.get(detail.at("files").at(0).at("url")).status, 404);
}

TEST_F(WebAppTest, windowsHearOfChangesTheirPersonMaySee) {
    const std::string secret = makeBoard(robin, "Secret", {{"private", true}});
    const std::string host = service->webOrigin().substr(std::string_view("http://").size());
    const std::string request = "GET /api/events HTTP/1.1\r\nHost: " + host + "\r\nCookie: " + rosa.cookie + "\r\n\r\n";
    test::RawConnection window(service->webOrigin());
    window.exchange(request, ": connected");
    makeTask(robin, secret, "hidden");
    makeTask(robin, board, "seen", {{"assignees", {"rosa"}}});
    const std::string events = window.exchange("", "TSK-2");
    EXPECT_THAT(events, HasSubstr("text/event-stream"));
    EXPECT_THAT(events, HasSubstr(R"(event: changed
data: {"boards":["brd_1"],"scope":["inbox"],"tasks":["TSK-2"]})"));
    EXPECT_THAT(events, Not(HasSubstr("TSK-1")));
    EXPECT_THAT(events, Not(HasSubstr(secret)));
    EXPECT_EQ(test::Browser(service->webOrigin()).get("/api/events").status, 401);
}

}  // namespace
}  // namespace parvela::service
