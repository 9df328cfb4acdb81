#include "Automation/AutomationDoors.h"
#include "Automation/DesktopSearch.h"
#include "support/FakeClock.h"
#include "support/FakeSecretStore.h"
#include "support/FakeSleep.h"
#include "support/FakeTransport.h"
#include "support/MemoryStore.h"
#include "unit/Platform/BusPeer.h"
#include "unit/Platform/PrivateBus.h"

#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/Records.h>
#include <ParvelaKit/ShownTitle.h>

#include <malloc.h>

namespace parvela {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* automation = "app.parvela.Automation1";
constexpr const char* provider = "org.gnome.Shell.SearchProvider2";
constexpr const char* runner = "org.kde.krunner1";

class Automation : public ::testing::Test {
protected:
    static void SetUpTestSuite() { bus = new testing::PrivateBus; }
    static void TearDownTestSuite() { delete bus; }

    Automation() {
        store_->set("serverMode", std::string("custom"));
        store_->set("customAppURL", std::string("https://app.test"));
        store_->set("customAPIURL", std::string("https://api.test"));
        store_->set("defaultBoardID", std::string("b1"));
        store_->set("defaultBoardName", std::string("Home"));
        TokenStore(secrets_).save("tk_1", *Url::parse("https://api.test")).detach();
        open();
    }

    void open() {
        AutomationSurfaces surfaces{
            .openURL = [this](const Url& url) { said_.push_back("open " + url.text()); },
            .notify = [this](const std::string& title, const std::string& body,
                             const std::optional<Url>&) { said_.push_back("notify " + title + " | " + body); },
            .showAlert = [this](const std::string& message,
                                const std::string& more) { said_.push_back("alert " + message + " | " + more); },
            .readBoards = [this]() -> Task<void> {
                if (firstBoard_) store_->set("defaultBoardID", *firstBoard_);
                co_return;
            },
            .tasksChanged = [this] { ++changes_; },
            .wasUsed = [] {}};
        doors_.open(std::make_shared<AutomationActions>(
            AutomationActions{.intents = ParvelaIntents(session_, queue_, surfaces.openURL),
                              .session = session_,
                              .known = known_,
                              .surfaces = surfaces}));
    }

    struct Answer {
        bool ended = false;
        VariantPtr values;
        std::string text;  ///< the values, or the error's name and message
    };

    std::shared_ptr<Answer> start(const char* object, const char* interface, const char* method, GVariant* arguments) {
        auto answer = std::make_shared<Answer>();
        auto* const kept = new std::shared_ptr<Answer>(answer);
        g_dbus_connection_call(
            bus->connection(), g_dbus_connection_get_unique_name(exporter_.get()),
            AutomationDoors::path(object).c_str(), interface, method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
            10'000, nullptr,
            [](GObject* source, GAsyncResult* result, gpointer data) {
                const std::unique_ptr<std::shared_ptr<Answer>> holder(static_cast<std::shared_ptr<Answer>*>(data));
                Answer& one = **holder;
                ErrorPtr error;
                one.values = VariantPtr(
                    g_dbus_connection_call_finish(reinterpret_cast<GDBusConnection*>(source), result, error.out()));
                if (one.values) {
                    one.text = CharPtr(g_variant_print(one.values.get(), FALSE)).get();
                } else {
                    const CharPtr name(g_dbus_error_get_remote_error(error.get()));
                    g_dbus_error_strip_remote_error(error.get());
                    one.text = std::string(name ? name.get() : "none") + ": " + error->message;
                }
                one.ended = true;
            },
            kept);
        return answer;
    }

    std::string call(const char* object, const char* interface, const char* method, GVariant* arguments = nullptr) {
        const auto answer = start(object, interface, method, arguments);
        EXPECT_TRUE(testing::waitFor([&] { return answer->ended; }));
        return answer->text;
    }
    std::string add(const char* title, const char* board = "", const char* due = "", const char* priority = "") {
        return call("Automation", automation, "AddTask", g_variant_new("(ssss)", title, board, due, priority));
    }
    std::string find(const char* phrase) {
        const char* const terms[] = {phrase, nullptr};
        return call("SearchProvider", provider, "GetInitialResultSet", g_variant_new("(^as)", terms));
    }
    void answerTask(int status, const TaskSummary& task) {
        network_.answer("GET /api/v1/tasks/TSK-42", status, json::encode(task));
    }
    void answerLists(std::vector<TaskSummary> tasks) {
        network_.answer("GET /api/v1/tasks", 200, json::encode(TasksResponse{.tasks = std::move(tasks)}));
        network_.answer("GET /api/v1/boards", 200, json::encode(boards_));
    }

    static testing::PrivateBus* bus;
    const BoardsResponse boards_{.boards = {{.id = "b1", .name = "Home"}, {.id = "b2", .name = "Work"}}};
    std::shared_ptr<test::MemoryStore> store_ = std::make_shared<test::MemoryStore>();
    std::shared_ptr<test::FakeSecretStore> secrets_ = std::make_shared<test::FakeSecretStore>();
    std::shared_ptr<test::FakeClock> clock_ = std::make_shared<test::FakeClock>();
    test::FakeTransport network_;
    test::FakeSleep sleep_;
    test::TemporaryFolder folder_;
    OfflineQueue queue_{{.file = folder_.path() / "queue.db",
                         .clock = clock_.get(),
                         .random = [] { return 0.5; },
                         .sleep = sleep_.function()}};
    ParvelaSession session_{Preferences(store_), TokenStore(secrets_), network_.transport(), clock_};
    std::vector<std::string> said_;
    std::optional<std::string> firstBoard_;
    std::shared_ptr<KnownTasks> known_ = std::make_shared<KnownTasks>(session_);
    int changes_ = 0;
    dbus::Bus exporter_ = dbus::Bus::adopt(g_dbus_connection_new_for_address_sync(
        getenv("DBUS_SESSION_BUS_ADDRESS"),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr));
    AutomationDoors doors_{exporter_};
};

testing::PrivateBus* Automation::bus = nullptr;

TEST_F(Automation, carriesOutTheActionsAndAnswersWithTheirDialogs) {
    network_.answer(
        "POST /api/v1/tasks", 201,
        json::encode(TaskSummary{.key = "TSK-42", .title = "Call", .dueDate = "2026-06-11", .url = "/t/TSK-42"}));
    EXPECT_THAT(add("Call every monday !low", "b1", "tomorrow", "High"),
                AllOf(HasSubstr("('Added TSK-42: Call', [{"), HasSubstr("'key': <'TSK-42'>"),
                      HasSubstr("'url': <'https://app.test/t/TSK-42'>"), HasSubstr("'done': <false>"),
                      HasSubstr("Repeat rules can't be set")));
    EXPECT_EQ(network_.requests().back().body,
              R"({"board":"b1","due_date":"2026-06-11","priority":"high","title":"Call"})");

    network_.answer("GET /api/v1/tasks", 200,
                    json::encode(TasksResponse{.tasks = {{.title = "A"}, {.title = "B", .done = true}}}));
    EXPECT_THAT(call("Automation", automation, "DueToday"), HasSubstr("('1 task due today: A', [{"));
    answerTask(200, {.title = "Call", .url = "/t/TSK-42"});
    EXPECT_THAT(call("Automation", automation, "OpenTask", g_variant_new("(s)", " TSK-42 ")),
                HasSubstr("('Open TSK-42'"));
    EXPECT_THAT(said_, ElementsAre("open https://app.test/t/TSK-42"));
    answerTask(200, {.title = "Call"});
    network_.answer("PATCH /api/v1/tasks/TSK-42", 200, json::encode(TaskSummary{.done = true}));
    EXPECT_THAT(call("Automation", automation, "CompleteTask", g_variant_new("(s)", "TSK-42")),
                HasSubstr("('Done: Call'"));
    EXPECT_EQ(changes_, 2);

    for (int i = 0; i < 2; ++i) network_.answer("GET /api/v1/boards", 200, json::encode(boards_));
    const char* const none[] = {nullptr};
    const char* const one[] = {"b2", "b9", nullptr};
    EXPECT_EQ(call("Automation", automation, "Boards", g_variant_new("(^as)", none)),
              "([('b1', 'Home'), ('b2', 'Work')],)");
    EXPECT_EQ(call("Automation", automation, "Boards", g_variant_new("(^as)", one)), "([('b2', 'Work')],)");
}

TEST_F(Automation, namesEveryFailure) {
    for (int i = 0; i < 2; ++i) network_.answer("GET /api/v1/boards", 200, json::encode(boards_));
    EXPECT_EQ(add("x", "Attic"), "app.parvela.Error.UnknownBoard: There is no board “Attic”.");
    EXPECT_EQ(add("tomorrow"), "app.parvela.Error.NoTitle: Give the task a title.");
    EXPECT_THAT(add("x", "", "someday"), HasSubstr("app.parvela.Error.BadDate: “someday” is not a date."));
    EXPECT_THAT(add("x", "", "", "none"), HasSubstr("app.parvela.Error.BadPriority: “none” is not a priority."));
    EXPECT_EQ(call("Automation", automation, "OpenTask", g_variant_new("(s)", " ")),
              "app.parvela.Error.NoKey: Which task? (like TSK-42)");
    answerTask(404, {});
    EXPECT_EQ(call("Automation", automation, "CompleteTask", g_variant_new("(s)", "TSK-42")),
              "app.parvela.Error.NotFound: Not found.");
    store_->remove("defaultBoardID");
    EXPECT_EQ(add("x"), "app.parvela.Error.NoBoard: Pick a default board in Parvela Settings first.");
    firstBoard_ = "b2";
    network_.answer("POST /api/v1/tasks", 403);
    EXPECT_THAT(add("x"), HasSubstr("app.parvela.Error.Forbidden: "));
    EXPECT_THAT(network_.requests().back().body.value_or(""), HasSubstr(R"("board":"b2")"));
    secrets_->secrets.clear();
    EXPECT_EQ(add("x"), "app.parvela.Error.NotLinked: " + APIError::missingToken().message());
    EXPECT_EQ(changes_, 0);
    EXPECT_THAT(network_.routes(), ElementsAre("GET /api/v1/boards", "GET /api/v1/tasks/TSK-42", "POST /api/v1/tasks"));
}

TEST_F(Automation, refusesHostileCalls) {
    EXPECT_THAT(call("Automation", automation, "AddTask", g_variant_new("(i)", 1)), HasSubstr("InvalidArgs"));
    EXPECT_THAT(call("Automation", automation, "Format"), HasSubstr("UnknownMethod"));
    const std::string huge(std::size_t{10} * 1024 * 1024, 'x');
    malloc_trim(0);
    const auto used = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
    const auto before = used();
    for (int i = 0; i < 8; ++i) {
        EXPECT_THAT(add(huge.c_str()), HasSubstr("app.parvela.Error.TooLong"));
        EXPECT_THAT(find(huge.c_str()), HasSubstr("app.parvela.Error.TooLong"));
    }
    // GDBus reads into one buffer, which stays as large as the largest message; its threads let go of the message
    // itself a moment later.
    EXPECT_TRUE(testing::waitFor([&] { return used() < before + huge.size() + std::size_t{1024} * 1024; }));

    // A flood: what is beyond the limit is refused at once, and later calls work again.
    std::vector<Deferred<test::TransportResult>> held;
    std::vector<std::shared_ptr<Answer>> answers;
    for (std::size_t i = 0; i < CallGate::mostCalls; ++i) held.push_back(network_.hold("GET /api/v1/tasks"));
    for (int i = 0; i < 100; ++i) answers.push_back(start("Automation", automation, "DueToday", nullptr));
    const auto refused = [&] { return std::ranges::count_if(answers, [](const auto& one) { return one->ended; }); };
    const auto beyond = static_cast<std::ptrdiff_t>(100 - CallGate::mostCalls);
    ASSERT_TRUE(testing::waitFor([&] { return refused() == beyond; }));
    EXPECT_EQ(answers.back()->text, "app.parvela.Error.Busy: Too many calls at once.");
    EXPECT_FALSE(doors_.isIdle());
    for (const auto& one : held) one.resolve(test::FakeTransport::ok(R"({"tasks":[]})"));
    ASSERT_TRUE(testing::waitFor([&] { return refused() == 100; }));
    EXPECT_TRUE(doors_.isIdle());

    doors_.open(nullptr);
    EXPECT_THAT(add("x"), HasSubstr("app.parvela.Error.Busy"));
}

TEST_F(Automation, searchFindsWhatIsKnownAndOffersThePhrase) {
    answerLists({{.key = "TSK-42", .title = "Call Sam", .board = "Home", .dueDate = "2026-06-10"}});
    EXPECT_EQ(find("sam"), "(['task:TSK-42'],)");
    EXPECT_EQ(find("work"), "(['board:b2'],)");
    EXPECT_EQ(find("Call Sam tomorrow"), "(['add:Call Sam tomorrow'],)");
    EXPECT_EQ(find("add sam"), "(['add:sam'],)");
    EXPECT_EQ(find("firefox"), "([],)");
    EXPECT_EQ(network_.requests().size(), 2U) << "the service does not learn what is searched for";

    const char* const ids[] = {"task:TSK-42", "board:b2", "add:Call Sam tomorrow !high", "task:TSK-9", "add:tomorrow",
                               "what",        nullptr};
    const std::string metas = call("SearchProvider", provider, "GetResultMetas", g_variant_new("(^as)", ids));
    EXPECT_THAT(metas,
                AllOf(HasSubstr("'name': <'Call Sam'>, 'description': <'TSK-42 · Home · Today'>"),
                      HasSubstr("'name': <'Work'>, 'description': <'Board in Parvela'>"),
                      HasSubstr("'name': <'Add “Call Sam”'>, 'description': <'Add Task · Tomorrow · High · Home'>"),
                      Not(HasSubstr("TSK-9")), Not(HasSubstr("what"))));
    EXPECT_THAT(call("Runner", runner, "Match", g_variant_new("(s)", "tsk-42")),
                HasSubstr("('task:TSK-42', 'Call Sam', 'app.parvela.Parvela', 100, 1.0"));

    // Grown old, it is read again while the answer comes from what is known.
    clock_->advance(std::chrono::minutes(2));
    answerLists({{.key = "TSK-43", .title = "Call Sam again"}});
    EXPECT_EQ(find("sam"), "(['task:TSK-43'],)");
}

TEST_F(Automation, searchFindsWhatHasJustChanged) {
    answerLists({{.key = "TSK-1", .title = "Call Sam"}});
    EXPECT_EQ(find("call"), "(['task:TSK-1'],)");
    // What came through a door is known at once, also when an older list arrives after it.
    clock_->advance(std::chrono::minutes(2));
    const auto older = network_.hold("GET /api/v1/tasks");
    const auto newer = network_.hold("GET /api/v1/tasks");
    for (int i = 0; i < 2; ++i) network_.answer("GET /api/v1/boards", 200, json::encode(boards_));
    EXPECT_EQ(find("kim"), "([],)");
    network_.answer("POST /api/v1/tasks", 201, json::encode(TaskSummary{.key = "TSK-2", .title = "Call Kim"}));
    EXPECT_THAT(add("Call Kim"), HasSubstr("TSK-2"));
    EXPECT_EQ(find("kim"), "(['task:TSK-2'],)");
    older.resolve(test::FakeTransport::ok(R"({"tasks":[]})"));
    EXPECT_EQ(find("kim"), "(['task:TSK-2'],)");
    newer.resolve(test::FakeTransport::ok(R"({"tasks":[]})"));
    EXPECT_EQ(find("kim"), "([],)");
    // What came another way is waited for.
    known_->changed();
    const auto changed = network_.hold("GET /api/v1/tasks");
    network_.answer("GET /api/v1/boards", 200, json::encode(boards_));
    const char* const terms[] = {"robin", nullptr};
    const auto search = start("SearchProvider", provider, "GetInitialResultSet", g_variant_new("(^as)", terms));
    ASSERT_TRUE(testing::waitFor([&] { return network_.requests().size() == 9; }));
    EXPECT_FALSE(search->ended);
    changed.resolve(
        test::FakeTransport::ok(json::encode(TasksResponse{.tasks = {{.key = "TSK-3", .title = "Call Robin"}}})));
    ASSERT_TRUE(testing::waitFor([&] { return search->ended; }));
    EXPECT_EQ(search->text, "(['task:TSK-3'],)");
}

TEST_F(Automation, searchCarriesOutWhatIsChosen) {
    answerLists({});
    EXPECT_EQ(find("x"), "([],)");
    const auto choose = [&](const char* id) {
        call("Runner", runner, "Run", g_variant_new("(ss)", id, ""));
        return said_.empty() ? std::string() : said_.back();
    };
    network_.answer("POST /api/v1/tasks", 201, json::encode(TaskSummary{.key = "TSK-42", .title = "Call"}));
    EXPECT_EQ(choose("add:Call tomorrow"), "notify Added TSK-42 — " + shownTitle("Call") + " | ");
    network_.fail("POST /api/v1/tasks", TransportError::unreachable);
    EXPECT_EQ(choose("add:Call later"), "notify Saved. It will be added when you are back online. | Call later");
    network_.answer("POST /api/v1/tasks", 403);
    EXPECT_EQ(choose("add:Call never"),
              "alert Couldn't add “" + shownTitle("Call never") + "” | " + APIError::forbidden("").message());
    EXPECT_EQ(choose("board:b2"), "open https://app.test/b/b2");
    answerTask(404, {});
    EXPECT_EQ(choose("task:TSK-42"), "alert Couldn't open TSK-42 | Not found.");
    const auto said = said_.size();
    const std::string endless = "add:" + std::string(5000, 'x');
    for (const char* id : {"", "what", "board:b9", "format:/", endless.c_str()}) choose(id);
    EXPECT_EQ(said_.size(), said);

    // What is chosen counts as a call until it is done, though nobody waits for it.
    std::vector<Deferred<test::TransportResult>> held;
    for (std::size_t i = 0; i < CallGate::mostCalls; ++i) {
        held.push_back(network_.hold("POST /api/v1/tasks"));
        choose("add:Wait for it");
    }
    EXPECT_THAT(call("Runner", runner, "Run", g_variant_new("(ss)", "add:One more", "")), HasSubstr("Error.Busy"));
    for (const auto& one : held) one.resolve(Failure(TransportError::unreachable));
    const char* const terms[] = {"a&b", "c", nullptr};
    call("SearchProvider", provider, "LaunchSearch", g_variant_new("(^asu)", terms, 0U));
    EXPECT_EQ(said_.back(), "open https://app.test/search?q=a%26b%20c");
}

TEST_F(Automation, searchOffersNothingWithoutALink) {
    secrets_->secrets.clear();
    EXPECT_EQ(find("add milk tomorrow"), "([],)");
    EXPECT_THAT(network_.routes(), IsEmpty());
}

}  // namespace
}  // namespace parvela
