#include <ParvelaKit/ParvelaIntents.h>
#include <ParvelaKit/Records.h>

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace parvela {
namespace {

using Outcome = ParvelaIntents::Outcome;

constexpr const char* noBoardText = "Pick a default board in Parvela Settings first.";
/// Titles beyond these are not read out.
constexpr std::size_t mostTitlesNamed = 5;

constexpr std::array addParameters = {
    IntentParameter{.name = "title", .title = "Title", .prompt = "What's the task?"},
    IntentParameter{.name = "board",
                    .title = "Board",
                    .description = "Leave empty to use the default board from Settings.",
                    .isOptional = true},
    IntentParameter{.name = "dueDate", .title = "Due Date", .isOptional = true},
    IntentParameter{.name = "priority", .title = "Priority", .isOptional = true},
};
constexpr std::array keyParameter = {
    IntentParameter{.name = "key", .title = "Task Key", .prompt = "Which task? (like TSK-42)"},
};

constexpr std::array<std::string_view, 4> addPhrases = {"Add a task in {app}", "New {app} task", "Add a task to {app}",
                                                        "Quick add in {app}"};
constexpr std::array<std::string_view, 2> showPhrases = {"What's due today in {app}", "Show my {app} tasks due today"};
constexpr std::array<std::string_view, 1> openPhrases = {"Open a task in {app}"};
constexpr std::array<std::string_view, 2> completePhrases = {"Complete a task in {app}", "Mark a {app} task done"};

constexpr std::array allDescriptions = {
    IntentDescription{.name = "AddTaskIntent",
                      .title = "Add Task",
                      .parameters = addParameters,
                      .summary = "Add {title} to {board}",
                      .phrases = addPhrases,
                      .shortTitle = "Add Task",
                      .systemImage = "plus.circle"},
    IntentDescription{.name = "ShowTasksDueTodayIntent",
                      .title = "Show Tasks Due Today",
                      .phrases = showPhrases,
                      .shortTitle = "Due Today",
                      .systemImage = "calendar"},
    IntentDescription{.name = "OpenTaskIntent",
                      .title = "Open Task",
                      .parameters = keyParameter,
                      .summary = "Open {key}",
                      .phrases = openPhrases,
                      .shortTitle = "Open Task",
                      .systemImage = "arrow.up.forward.app"},
    IntentDescription{.name = "CompleteTaskIntent",
                      .title = "Complete Task",
                      .parameters = keyParameter,
                      .summary = "Complete {key}",
                      .phrases = completePhrases,
                      .shortTitle = "Complete Task",
                      .systemImage = "checkmark.circle"},
};

QuickAddPriority quickAddPriority(TaskPriorityOption option) {
    switch (option) {
        case TaskPriorityOption::low:
            return QuickAddPriority::low;
        case TaskPriorityOption::medium:
            return QuickAddPriority::medium;
        case TaskPriorityOption::high:
            return QuickAddPriority::high;
        case TaskPriorityOption::urgent:
            break;
    }
    return QuickAddPriority::urgent;
}

Failure<IntentError> failed(const APIError& error) {
    return Failure(IntentError{error.message(), error});
}

Failure<IntentError> failed(const APIFailure& failure) {
    return failure.error() ? failed(*failure.error()) : Failure(IntentError{});
}

Outcome addTask(ParvelaSession session, OfflineQueue* queue, AddTaskIntent intent) {
    auto connecting = session.client();
    const auto api = co_await connecting;
    if (!api) co_return failed(APIError::missingToken());

    if (!intent.board) {
        if (const auto id = session.prefs().defaultBoardID()) {
            intent.board = BoardEntity{*id, session.prefs().defaultBoardName().value_or(std::string())};
        }
    }
    if (!intent.board) co_return Failure(IntentError{noBoardText});

    QuickAddSubmission submission{
        .line = std::move(intent.title), .board = intent.board->id, .today = session.clock().today()};
    if (intent.dueDate) submission.dueDate = intent.dueDate->text();
    if (intent.priority) submission.priority = quickAddPriority(*intent.priority);
    auto submitting = queue->submit(std::move(submission), intent.board->name, *api);
    auto receipt = co_await submitting;
    if (!receipt) {
        const auto& failure = receipt.error().apiFailure();
        if (failure) co_return failed(*failure);
        co_return Failure(IntentError{receipt.error().message()});
    }
    if (!receipt->task) co_return IntentResult{receipt->note.value_or(std::string())};

    IntentResult result{fmt::format("Added {}: {}", receipt->task->key, receipt->task->title)};
    result.tasks.push_back(*std::move(receipt->task));
    co_return result;
}

std::string dueDialog(const std::vector<TaskSummary>& open) {
    if (open.empty()) return "Nothing due today.";
    if (open.size() == 1) return "1 task due today: " + open.front().title;
    std::string dialog = fmt::format("{} tasks due today: ", open.size());
    for (std::size_t i = 0; i < std::min(open.size(), mostTitlesNamed); ++i) {
        dialog += (i == 0 ? "" : "; ") + open[i].title;
    }
    return dialog;
}

Outcome showTasksDueToday(ParvelaSession session) {
    auto connecting = session.client();
    const auto api = co_await connecting;
    if (!api) co_return failed(APIError::missingToken());
    auto call = api->send<TasksResponse>(Endpoint::tasks({.due = DueFilter::today}));
    auto answer = co_await call;
    if (!answer) co_return failed(answer.error());
    std::erase_if(answer->tasks, [](const TaskSummary& task) { return task.done; });
    co_return IntentResult{dueDialog(answer->tasks), std::move(answer->tasks)};
}

/// An answer does not get to open anything else.
bool isWebAppPage(const Url& page, const ServerConfig& server) {
    const std::string scheme = page.lowercaseScheme();
    return (scheme == "https" || scheme == "http") && server.isInApp(page);
}

Outcome openTask(ParvelaSession session, OpenTaskIntent intent, std::function<void(Url)> openURL) {
    auto connecting = session.client();
    const auto api = co_await connecting;
    if (!api) co_return failed(APIError::missingToken());
    auto call = api->send<TaskSummary>(Endpoint::task(intent.key));
    auto task = co_await call;
    if (!task) co_return failed(task.error());
    const ServerConfig server = session.server();
    const auto page = task->url ? server.appURL.resolving(*task->url) : std::nullopt;
    if (!page || !isWebAppPage(*page, server)) co_return failed(APIError::invalidResponse());
    openURL(*page);

    IntentResult result{"Open " + intent.key};
    result.tasks.push_back(*std::move(task));
    co_return result;
}

Outcome completeTask(ParvelaSession session, CompleteTaskIntent intent) {
    auto connecting = session.client();
    const auto api = co_await connecting;
    if (!api) co_return failed(APIError::missingToken());
    auto call = api->send<TaskSummary>(Endpoint::task(intent.key));
    auto task = co_await call;
    if (!task) co_return failed(task.error());
    auto completing = api->send<TaskSummary>(Endpoint::updateTask(intent.key, TaskPatch{.done = true}));
    auto completed = co_await completing;
    if (!completed) co_return failed(completed.error());

    IntentResult result{"Done: " + task->title};
    result.tasks.push_back(*std::move(completed));
    co_return result;
}

/// Every board when `ids` is none.
Task<Result<std::vector<BoardEntity>, IntentError>> findBoards(ParvelaSession session,
                                                               std::optional<std::vector<std::string>> ids) {
    auto connecting = session.client();
    const auto api = co_await connecting;
    std::vector<BoardEntity> found;
    if (!api) co_return found;
    auto call = api->send<BoardsResponse>(Endpoint::boards());
    auto answer = co_await call;
    if (!answer) co_return failed(answer.error());
    for (Board& board : answer->boards) {
        if (ids && std::ranges::find(*ids, board.id) == ids->end()) continue;
        found.push_back({std::move(board.id), std::move(board.name)});
    }
    co_return found;
}

}  // namespace

std::string_view TaskPriorityOptions::rawValue(TaskPriorityOption option) {
    return QuickAdd::apiString(quickAddPriority(option));
}

std::string_view TaskPriorityOptions::displayName(TaskPriorityOption option) {
    return QuickAdd::displayText(quickAddPriority(option));
}

std::optional<TaskPriorityOption> TaskPriorityOptions::fromRawValue(std::string_view text) {
    const auto found = std::ranges::find(all, text, rawValue);
    if (found == all.end()) return std::nullopt;
    return *found;
}

std::vector<std::string> IntentDescription::phrasesFor(std::string_view applicationName) const {
    constexpr std::string_view place = "{app}";
    std::vector<std::string> filled;
    for (const std::string_view phrase : phrases) {
        std::string text(phrase);
        text.replace(text.find(place), place.size(), applicationName);
        filled.push_back(std::move(text));
    }
    return filled;
}

std::span<const IntentDescription> ParvelaIntents::descriptions() {
    return allDescriptions;
}

Outcome ParvelaIntents::perform(AddTaskIntent intent) const {
    return addTask(session_, queue_, std::move(intent));
}

Outcome ParvelaIntents::perform(ShowTasksDueTodayIntent) const {
    return showTasksDueToday(session_);
}

Outcome ParvelaIntents::perform(OpenTaskIntent intent) const {
    return openTask(session_, std::move(intent), openURL_);
}

Outcome ParvelaIntents::perform(CompleteTaskIntent intent) const {
    return completeTask(session_, std::move(intent));
}

Task<Result<std::vector<BoardEntity>, IntentError>> ParvelaIntents::suggestedBoards() const {
    return findBoards(session_, std::nullopt);
}

Task<Result<std::vector<BoardEntity>, IntentError>> ParvelaIntents::boards(std::vector<std::string> ids) const {
    return findBoards(session_, std::move(ids));
}

}  // namespace parvela
