#include "Model/AppModel.h"

#include <ParvelaKit/TokenFormat.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <utility>

namespace parvela {

namespace {

std::string missingTokenText() {
    return APIError::missingToken().message();
}

}  // namespace

std::string CreateTaskError::message() const {
    if (noBoard) return "Pick a default board in Settings first.";
    return failure.error() ? failure.error()->message() : std::string();
}

std::shared_ptr<AppModel> AppModel::create(ParvelaSession session, AppModelEnvironment environment) {
    return std::shared_ptr<AppModel>(new AppModel(std::move(session), std::move(environment)));
}

AppModel::AppModel(ParvelaSession initialSession, AppModelEnvironment environment)
    : session(std::move(initialSession)),
      server(ServerConfig::current(session.prefs())),
      linkInfo(session.linkInfo()),
      defaultBoardID(session.prefs().defaultBoardID()),
      environment_(std::move(environment)),
      badgeShown_(badgeCount.observe([this](std::int64_t) { updateDockBadge(); })) {
}

Task<void> AppModel::reloadCredentials() {
    const auto self = shared_from_this();
    const auto read = ++credentialReads_;
    auto current = ServerConfig::current(session.prefs());
    if (current != server.get()) knownToken_.reset();
    server.set(std::move(current));

    auto reading = session.tokens().read(server.get().apiURL);
    const auto token = co_await reading;
    if (read != credentialReads_) co_return;  // a later read knows better

    const auto mark = token ? std::optional(std::hash<std::string>()(*token)) : std::nullopt;
    const auto known = std::exchange(knownToken_, mark);
    // By another program; who changes it here forgets the known one first.
    const bool wasChanged = known && known != mark;
    if (wasChanged) ++epoch_;

    hasToken.set(token.has_value());
    tokenHint.set(token ? std::optional(parvela::tokenHint(*token)) : std::nullopt);
    linkInfo.set(session.linkInfo());
    knowsCredentials.set(true);
    if (!wasChanged) co_return;
    if (!token) forgetAccount();
    environment_.notifications->linkChanged.post();
}

Task<void> AppModel::setServer(ServerConfig config) {
    const auto self = shared_from_this();
    if (config == server.get()) co_return;

    const Preferences& prefs = session.prefs();
    prefs.setServerMode(config.mode);
    if (config.mode == ServerConfig::Mode::custom) {
        prefs.setCustomAppURL(config.appURL.text());
        prefs.setCustomApiURL(config.apiURL.text());
    }
    leaveAccount();
    server.set(std::move(config));
    std::int64_t revision = 0;
    if (__builtin_add_overflow(serverRevision.get(), std::int64_t{1}, &revision)) std::abort();
    serverRevision.set(revision);
    forgetLists();

    auto reloading = reloadCredentials();
    co_await reloading;
}

Task<Result<void, LinkError>> AppModel::adoptLink(BridgeMessage::Link link, std::optional<Url> sender) {
    const auto self = shared_from_this();
    const auto previous = linkInfo.get();
    const auto workspaceId = link.workspaceId;

    auto adopting = session.adoptLink(std::move(link), std::move(sender));
    auto adopted = co_await adopting;
    if (!adopted) co_return adopted;

    leaveAccount();
    auto reloading = reloadCredentials();
    co_await reloading;
    // A board of another workspace must never stay the default.
    if (!previous || previous->workspaceId != workspaceId) setDefaultBoard(std::nullopt);
    environment_.notifications->linkChanged.post();
    refreshThenSyncPush().detach();
    co_return Result<void, LinkError>();
}

Task<Result<void, PastedTokenError>> AppModel::savePastedToken(std::string text) {
    const auto self = shared_from_this();
    auto saving = session.savePastedToken(std::move(text));
    auto saved = co_await saving;
    if (!saved) co_return saved;

    leaveAccount();
    auto reloading = reloadCredentials();
    co_await reloading;
    environment_.notifications->linkChanged.post();
    refreshThenSyncPush().detach();
    co_return Result<void, PastedTokenError>();
}

Task<Unlinked> AppModel::unlink() {
    const auto self = shared_from_this();
    auto unlinking = session.unlink();
    const Unlinked outcome = co_await unlinking;

    leaveAccount();
    auto reloading = reloadCredentials();
    co_await reloading;
    forgetAccount();
    environment_.notifications->linkChanged.post();
    co_return outcome;
}

Task<void> AppModel::refreshAll() {
    const auto self = shared_from_this();
    auto boardsRefresh = refreshBoards();
    auto dueRefresh = refreshDue();
    co_await boardsRefresh;
    co_await dueRefresh;
}

Task<void> AppModel::refreshThenSyncPush() {
    const auto self = shared_from_this();
    auto refreshing = refreshAll();
    co_await refreshing;
    environment_.syncPush();
}

Task<void> AppModel::refreshBoards() {
    const auto self = shared_from_this();
    const auto epoch = epoch_;
    auto making = makeClient();
    const auto api = co_await making;
    if (epoch != epoch_) co_return;
    if (!api) {
        boardsError.set(missingTokenText());
        co_return;
    }

    isLoadingBoards.set(true);
    auto call = api->send<BoardsResponse>(Endpoint::boards());
    auto answer = co_await call;
    if (epoch == epoch_) {
        if (answer) {
            boards.set(std::move(answer->boards));
            workspaceName.set(std::move(answer->workspace.name));
            boardsError.set(std::nullopt);
            repairDefaultBoard();
        } else if (const auto& error = answer.error().error()) {
            boardsError.set(error->message());
        }
    }
    isLoadingBoards.set(false);
}

void AppModel::tasksChanged() {
    environment_.notifications->tasksChanged.post();
    refreshDue().detach();
}

Task<void> AppModel::refreshDue() {
    const auto self = shared_from_this();
    const auto epoch = epoch_;
    auto making = makeClient();
    const auto api = co_await making;
    if (epoch != epoch_) co_return;
    if (!api) {
        dueError.set(missingTokenText());
        dueToday.set({});
        co_return;
    }

    isLoadingDue.set(true);
    TaskListOptions dueNow;
    dueNow.due = DueFilter::today;
    auto call = api->send<TasksResponse>(Endpoint::tasks(dueNow));
    auto answer = co_await call;
    if (epoch == epoch_) {
        if (answer) {
            dueToday.set(std::move(answer->tasks));
            dueError.set(std::nullopt);
            dueLoadedAt.set(environment_.clock->now());
        } else if (const auto& error = answer.error().error()) {
            dueError.set(error->message());
        }
    }
    isLoadingDue.set(false);
}

Task<void> AppModel::setDone(std::string taskID, bool done) {
    const auto self = shared_from_this();
    const auto epoch = epoch_;
    const auto& tasks = dueToday.get();
    if (std::ranges::find(tasks, taskID, &TaskSummary::id) == tasks.end()) co_return;
    changeDue(taskID, [done](TaskSummary& task) { task.done = done; });

    auto making = makeClient();
    const auto api = co_await making;
    std::optional<std::string> error;
    if (api) {
        TaskPatch patch;
        patch.done = done;
        auto call = api->send<TaskSummary>(Endpoint::updateTask(taskID, patch));
        auto answer = co_await call;
        if (epoch != epoch_) co_return;  // the list belongs to another account now
        if (answer) {
            changeDue(taskID, [&answer](TaskSummary& task) { task = std::move(*answer); });
            dueError.set(std::nullopt);
            co_return;
        }
        if (const auto& failed = answer.error().error()) error = failed->message();
    } else {
        error = missingTokenText();
    }
    changeDue(taskID, [done](TaskSummary& task) { task.done = !done; });
    if (error) dueError.set(error);
}

Task<Result<TaskSummary, CreateTaskError>> AppModel::createTask(NewTask task) {
    const auto self = shared_from_this();
    auto making = makeClient();
    const auto api = co_await making;
    if (!api) co_return Failure(CreateTaskError{APIError::missingToken()});

    auto board = defaultBoardID.get();
    if (!board) {
        auto call = api->send<BoardsResponse>(Endpoint::boards());
        auto answer = co_await call;
        if (!answer) co_return Failure(CreateTaskError{answer.error()});
        if (answer->boards.empty()) {
            CreateTaskError noBoard;
            noBoard.noBoard = true;
            co_return Failure(noBoard);
        }
        board = answer->boards.front().id;
    }
    task.board = *board;
    task.list.reset();
    auto call = api->send<TaskSummary>(Endpoint::createTask(task));
    auto answer = co_await call;
    if (!answer) co_return Failure(CreateTaskError{answer.error()});
    co_return std::move(*answer);
}

void AppModel::setDefaultBoard(std::optional<std::string> id) {
    defaultBoardID.set(std::move(id));
    persistDefaultBoard();
}

void AppModel::setTimer(std::optional<TimerInfo> info) {
    timer.set(std::move(info));
}

void AppModel::setBadge(std::int64_t count) {
    badgeCount.set(count);
}

void AppModel::updateDockBadge() const {
    const auto count = badgeCount.get();
    environment_.showBadge(count >= 1 ? std::optional(std::to_string(count)) : std::nullopt);
}

Task<std::optional<ParvelaAPI>> AppModel::makeClient() const {
    return session.client();
}

void AppModel::repairDefaultBoard() {
    const auto& known = boards.get();
    if (const auto& id = defaultBoardID.get(); id && std::ranges::find(known, *id, &Board::id) != known.end()) {
        persistDefaultBoard();
        return;
    }
    setDefaultBoard(known.empty() ? std::nullopt : std::optional(known.front().id));
}

void AppModel::persistDefaultBoard() {
    const auto& id = defaultBoardID.get();
    session.prefs().setDefaultBoardID(id);
    if (!id) return;
    // A name that is not known now stays the one that was stored when the list was last known.
    const auto& known = boards.get();
    if (const auto board = std::ranges::find(known, *id, &Board::id); board != known.end()) {
        session.prefs().setDefaultBoardName(board->name);
    }
}

void AppModel::forgetLists() {
    boards.set({});
    dueToday.set({});
}

void AppModel::leaveAccount() {
    ++epoch_;
    knownToken_.reset();
}

void AppModel::forgetAccount() {
    forgetLists();
    timer.set(std::nullopt);
    if (badgeCount.get() == 0) {
        updateDockBadge();
    } else {
        badgeCount.set(0);
    }
}

void AppModel::changeDue(const std::string& id, const std::function<void(TaskSummary&)>& change) {
    auto tasks = dueToday.get();
    const auto found = std::ranges::find(tasks, id, &TaskSummary::id);
    if (found == tasks.end()) return;
    change(*found);
    dueToday.set(std::move(tasks));
}

}  // namespace parvela
