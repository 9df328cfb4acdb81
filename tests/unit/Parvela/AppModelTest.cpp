#include "Model/AppModel.h"
#include "support/LinkedDevice.h"

#include <ParvelaKit/Json/Encoder.h>

namespace parvela {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* boardsRoute = "GET /api/v1/boards";
constexpr const char* dueRoute = "GET /api/v1/tasks?due=today";

std::string boardsBody(const std::vector<std::string>& ids) {
    BoardsResponse answer{.workspace = {.id = "w", .name = "Studio"}};
    for (const auto& id : ids) answer.boards.push_back({.id = id, .name = "Board " + id});
    return json::encode(answer);
}

TaskSummary task(const std::string& id, bool done = false) {
    return {.id = id, .key = "TSK-1", .title = "Brief", .done = done};
}

std::string tasksBody(std::vector<TaskSummary> tasks) {
    return json::encode(TasksResponse{.today = "2026-06-10", .tasks = std::move(tasks)});
}

class AppModelTest : public testing::Test, protected test::LinkedDevice {
protected:
    AppModelTest() { unlink(); }

    std::shared_ptr<AppModel> makeModel() {
        AppModelEnvironment environment;
        environment.clock = clock;
        environment.notifications = notifications;
        environment.showBadge = [this](std::optional<std::string> label) { badges.push_back(label.value_or("none")); };
        environment.syncPush = [this] { ++pushSyncs; };
        auto model = AppModel::create(session(), environment);
        run(model->reloadCredentials());
        return model;
    }

    std::shared_ptr<AppModel> makeLinkedModel() {
        link();
        return makeModel();
    }

    template <class T>
    static T run(Task<T> work) {
        EXPECT_TRUE(work.done());
        return std::move(work).result();
    }

    void readDue(const std::shared_ptr<AppModel>& model, std::vector<TaskSummary> tasks) {
        network.answer(dueRoute, 200, tasksBody(std::move(tasks)));
        run(model->refreshDue());
    }

    static BridgeMessage::Link linkTo(const std::string& workspace) {
        return {"tk_linked", *Url::parse("http://127.0.0.1:3213"), workspace, "Studio", "Robin"};
    }

    std::shared_ptr<NotificationCentre> notifications = std::make_shared<NotificationCentre>();
    std::vector<std::string> badges;
    int pushSyncs = 0;
    int announced = 0;
    Subscription announcements = notifications->linkChanged.observe([this] { ++announced; });
};

TEST_F(AppModelTest, readsServerTokenAndDefaultBoardAtTheStart) {
    prefs.setDefaultBoardID("b7");
    const auto model = makeLinkedModel();
    EXPECT_EQ(model->server.get(), ServerConfig::local());
    EXPECT_TRUE(model->hasToken.get());
    EXPECT_TRUE(model->knowsCredentials.get());
    EXPECT_EQ(model->tokenHint.get(), "tk_se…");
    EXPECT_EQ(model->defaultBoardID.get(), "b7");
    EXPECT_EQ(makeModel()->serverRevision.get(), 0);
}

TEST_F(AppModelTest, withoutATokenNothingIsAskedOfTheService) {
    const auto model = makeModel();
    run(model->refreshAll());
    run(model->createTask({}));
    EXPECT_EQ(model->boardsError.get(), APIError::missingToken().message());
    EXPECT_EQ(model->dueError.get(), APIError::missingToken().message());
    EXPECT_FALSE(model->isLoadingBoards.get());
    EXPECT_THAT(network.requests(), IsEmpty());
}

TEST_F(AppModelTest, refreshesBothListsAtOnce) {
    const auto model = makeLinkedModel();
    const auto boards = network.hold(boardsRoute);
    const auto due = network.hold(dueRoute);
    auto refreshing = model->refreshAll();
    EXPECT_THAT(network.routes(), ElementsAre(boardsRoute, dueRoute));
    EXPECT_TRUE(model->isLoadingBoards.get() && model->isLoadingDue.get());

    due.resolve(network.ok(tasksBody({task("t1")})));
    boards.resolve(network.ok(boardsBody({"b1", "b2"})));
    ASSERT_TRUE(refreshing.done());
    EXPECT_FALSE(model->isLoadingBoards.get() || model->isLoadingDue.get());
    EXPECT_EQ(model->boards.get().size(), 2U);
    EXPECT_EQ(model->workspaceName.get(), "Studio");
    EXPECT_EQ(model->dueToday.get().size(), 1U);
    EXPECT_EQ(model->dueLoadedAt.get(), clock->now());
}

TEST_F(AppModelTest, aFailedRefreshKeepsWhatWasThere) {
    const auto model = makeLinkedModel();
    network.answer(boardsRoute, 200, boardsBody({"b1"}));
    network.answer(dueRoute, 200, tasksBody({task("t1")}));
    run(model->refreshAll());
    const auto loadedAt = model->dueLoadedAt.get();
    clock->advance(std::chrono::minutes(1));
    network.answer(boardsRoute, 500);
    network.fail(dueRoute, TransportError::unreachable);
    run(model->refreshAll());
    EXPECT_EQ(model->boardsError.get(), APIError::server(500, "").message());
    EXPECT_EQ(model->dueError.get(), APIError::offline().message());
    EXPECT_EQ(model->boards.get().size(), 1U);
    EXPECT_EQ(model->dueToday.get().size(), 1U);
    EXPECT_EQ(model->dueLoadedAt.get(), loadedAt);
}

TEST_F(AppModelTest, repairsTheDefaultBoard) {
    const struct {
        std::optional<std::string> stored;
        std::vector<std::string> served;
        std::optional<std::string> expected;
        std::optional<std::string> expectedName;
    } cases[] = {
        {"b2", {"b1", "b2"}, "b2", "Board b2"},
        {"gone", {"b1", "b2"}, "b1", "Board b1"},
        {std::nullopt, {"b1"}, "b1", "Board b1"},
        {"gone", {}, std::nullopt, "Old name"},
    };
    for (const auto& each : cases) {
        prefs.setDefaultBoardID(each.stored);
        prefs.setDefaultBoardName("Old name");
        const auto model = makeLinkedModel();
        network.answer(boardsRoute, 200, boardsBody(each.served));
        run(model->refreshBoards());
        EXPECT_EQ(model->defaultBoardID.get(), each.expected);
        EXPECT_EQ(prefs.defaultBoardID(), each.expected);
        EXPECT_EQ(prefs.defaultBoardName(), each.expectedName);
    }
}

TEST_F(AppModelTest, choosingAnUnknownBoardKeepsTheStoredName) {
    prefs.setDefaultBoardName("Old name");
    makeLinkedModel()->setDefaultBoard("b9");
    EXPECT_EQ(prefs.defaultBoardID(), "b9");
    EXPECT_EQ(prefs.defaultBoardName(), "Old name");
}

TEST_F(AppModelTest, switchingTheServerForgetsTheOldOne) {
    const auto model = makeLinkedModel();
    network.answer(boardsRoute, 200, boardsBody({"b1"}));
    run(model->refreshBoards());
    run(model->setServer(model->server.get()));
    EXPECT_EQ(model->serverRevision.get(), 0);
    EXPECT_EQ(model->boards.get().size(), 1U);

    run(model->setServer(ServerConfig::production()));
    EXPECT_EQ(model->serverRevision.get(), 1);
    EXPECT_THAT(model->boards.get(), IsEmpty());
    EXPECT_FALSE(model->hasToken.get());
    EXPECT_EQ(model->tokenHint.get(), std::nullopt);
    EXPECT_EQ(prefs.serverMode(), ServerConfig::Mode::production);
}

TEST_F(AppModelTest, anAnswerOfTheOldServerIsDropped) {
    const auto model = makeLinkedModel();
    const auto boards = network.hold(boardsRoute);
    auto refreshing = model->refreshBoards();
    run(model->setServer(ServerConfig::production()));
    boards.resolve(network.ok(boardsBody({"b1"})));
    EXPECT_TRUE(refreshing.done());
    EXPECT_THAT(model->boards.get(), IsEmpty());
    EXPECT_FALSE(model->isLoadingBoards.get());
}

TEST_F(AppModelTest, aSlowKeyringDoesNotBringBackTheOldToken) {
    const auto model = makeLinkedModel();
    secrets->hold();
    auto slow = model->reloadCredentials();
    auto later = model->setServer(ServerConfig::production());
    secrets->release();
    EXPECT_TRUE(slow.done() && later.done());
    EXPECT_FALSE(model->hasToken.get());
}

TEST_F(AppModelTest, aLinkToAnotherWorkspaceClearsTheDefaultBoard) {
    const auto model = makeModel();
    const auto page = Url::parse("http://localhost:3100/home");
    for (const auto& [workspace, kept] : {std::pair{"w1", false}, {"w1", true}, {"w2", false}}) {
        model->setDefaultBoard("mine");
        network.answer(boardsRoute, 500);
        network.answer(dueRoute, 500);
        ASSERT_TRUE(run(model->adoptLink(linkTo(workspace), page)));
        EXPECT_EQ(model->defaultBoardID.get().has_value(), kept) << workspace;
    }
    EXPECT_EQ(announced, 3);
    EXPECT_EQ(pushSyncs, 3);
    EXPECT_TRUE(model->hasToken.get());
    EXPECT_EQ(model->linkInfo.get()->workspaceId, "w2");
}

TEST_F(AppModelTest, aRefusedLinkChangesNothing) {
    const auto model = makeModel();
    const auto refused = run(model->adoptLink(linkTo("w"), Url::parse("http://localhost:9999/")));
    ASSERT_FALSE(refused);
    EXPECT_FALSE(model->hasToken.get());
    EXPECT_EQ(pushSyncs, 0);
    EXPECT_THAT(secrets->secrets, IsEmpty());
}

TEST_F(AppModelTest, aPastedTokenTakesTheOldOnesPlace) {
    const auto model = makeLinkedModel();
    const auto refused = run(model->savePastedToken("no token"));
    ASSERT_FALSE(refused);
    EXPECT_EQ(message(refused.error()), "That doesn't look like a Parvela token. It starts with tk_.");
    EXPECT_EQ(announced, 0);

    const auto boards = network.hold(boardsRoute);
    const auto due = network.hold(dueRoute);
    ASSERT_TRUE(run(model->savePastedToken(" Bearer tk_pasted\n")));
    EXPECT_EQ(secrets->secrets[tokenItem], "tk_pasted");
    EXPECT_EQ(model->tokenHint.get(), "tk_pa…");
    EXPECT_EQ(announced, 1);
    EXPECT_THAT(network.routes(), ElementsAre(boardsRoute, dueRoute));
    due.resolve(network.ok(tasksBody({})));
    EXPECT_EQ(pushSyncs, 0);
    boards.resolve(Failure(TransportError::timedOut));
    EXPECT_EQ(pushSyncs, 1) << "after both lists, however they ended";
}

TEST_F(AppModelTest, unlinkingForgetsEverythingEvenWhenTheServiceFails) {
    const auto model = makeLinkedModel();
    readDue(model, {task("t1")});
    model->setBadge(3);
    model->setTimer(TimerInfo{"TSK-1", "Brief", std::nullopt, clock->now()});
    network.fail("POST /api/v1/token/revoke", TransportError::unreachable);
    badges.clear();
    run(model->unlink());
    EXPECT_FALSE(model->hasToken.get());
    EXPECT_THAT(secrets->secrets, IsEmpty());
    EXPECT_THAT(model->dueToday.get(), IsEmpty());
    EXPECT_EQ(model->timer.get(), std::nullopt);
    EXPECT_THAT(badges, ElementsAre("none"));
}

TEST_F(AppModelTest, aTokenThatAnotherProgramChangesEndsWhatWasAskedWithIt) {
    struct Case {
        std::optional<std::string> stored;
        bool isTheSame;
    };
    for (const auto& [stored, isTheSame] : {Case{"tk_secret", true}, {"tk_another", false}, {std::nullopt, false}}) {
        const auto model = makeLinkedModel();
        readDue(model, {task("t1")});
        model->setBadge(3);
        model->setTimer(TimerInfo{"TSK-1", "Brief", std::nullopt, clock->now()});
        const auto boards = network.hold(boardsRoute);
        auto refreshing = model->refreshBoards();
        announced = 0;

        secrets->secrets.clear();
        if (stored) secrets->secrets[tokenItem] = *stored;
        run(model->reloadCredentials());
        run(model->reloadCredentials());
        boards.resolve(network.ok(boardsBody({"b1"})));
        EXPECT_TRUE(refreshing.done());
        const std::string name = stored.value_or("none");
        EXPECT_EQ(model->boards.get().size(), isTheSame ? 1U : 0U) << name;
        EXPECT_EQ(announced, isTheSame ? 0 : 1) << name;
        EXPECT_EQ(model->dueToday.get().size(), stored ? 1U : 0U) << name;
        EXPECT_EQ(model->timer.get().has_value(), stored.has_value()) << name;
        EXPECT_EQ(model->badgeCount.get(), stored ? 3 : 0) << name;
    }
}

TEST_F(AppModelTest, theBadgeShowsCountsFromOne) {
    const auto model = makeModel();
    for (const std::int64_t count : {5, 5, 0, -1, 1200}) model->setBadge(count);
    EXPECT_THAT(badges, ElementsAre("5", "none", "none", "1200"));
}

TEST_F(AppModelTest, completingATaskShowsAtOnceAndIsTakenBackOnFailure) {
    const auto model = makeLinkedModel();
    readDue(model, {task("t1"), task("t2")});

    const auto answer = network.hold("PATCH /api/v1/tasks/t2");
    auto completing = model->setDone("t2", true);
    EXPECT_TRUE(model->dueToday.get()[1].done);
    answer.resolve(Failure(TransportError::timedOut));
    EXPECT_TRUE(completing.done());
    EXPECT_FALSE(model->dueToday.get()[1].done);
    EXPECT_EQ(model->dueError.get(), APIError::timedOut().message());
    EXPECT_EQ(network.requests().back().body, R"({"done":true})");

    network.answer("PATCH /api/v1/tasks/t2", 200, json::encode(task("t2", true)));
    run(model->setDone("t2", true));
    EXPECT_TRUE(model->dueToday.get()[1].done);
    EXPECT_EQ(model->dueError.get(), std::nullopt);
}

TEST_F(AppModelTest, completingFindsItsTaskAgainAfterTheListMoved) {
    const auto model = makeLinkedModel();
    readDue(model, {task("t1"), task("t2")});
    const auto answer = network.hold("PATCH /api/v1/tasks/t2");
    auto completing = model->setDone("t2", true);
    readDue(model, {task("t2", true), task("t3")});
    answer.resolve(Failure(TransportError::timedOut));
    EXPECT_TRUE(completing.done());
    EXPECT_FALSE(model->dueToday.get()[0].done);
    EXPECT_FALSE(model->dueToday.get()[1].done);
}

TEST_F(AppModelTest, completingWithoutTokenOrTaskSendsNothing) {
    const auto model = makeLinkedModel();
    readDue(model, {task("t1")});
    run(model->setDone("unknown", true));
    secrets->secrets.clear();
    std::vector<bool> shown;
    const auto subscription = model->dueToday.observe(
        [&shown](const std::vector<TaskSummary>& tasks) { shown.push_back(tasks.front().done); });
    run(model->setDone("t1", true));
    EXPECT_THAT(shown, ElementsAre(true, false));
    EXPECT_EQ(model->dueError.get(), APIError::missingToken().message());
    EXPECT_EQ(network.requests().size(), 1U);
}

TEST_F(AppModelTest, createsTasksOnTheDefaultElseTheFirstBoard) {
    const auto model = makeLinkedModel();
    NewTask draft;
    draft.title = "Brief";
    network.answer(boardsRoute, 200, boardsBody({"first"}));
    network.answer("POST /api/v1/tasks", 200, json::encode(task("t9")));
    EXPECT_EQ(run(model->createTask(draft))->id, "t9");
    EXPECT_THAT(*network.requests().back().body, testing::HasSubstr(R"("board":"first")"));

    network.answer(boardsRoute, 200, boardsBody({}));
    EXPECT_EQ(run(model->createTask(draft)).error().message(), "Pick a default board in Settings first.");

    model->setDefaultBoard("chosen");
    network.answer("POST /api/v1/tasks", 400, R"({"error":{"message":"Too long."}})");
    EXPECT_EQ(run(model->createTask(draft)).error().message(), "Too long.");
    EXPECT_THAT(*network.requests().back().body, testing::HasSubstr(R"("board":"chosen")"));
}

}  // namespace
}  // namespace parvela
