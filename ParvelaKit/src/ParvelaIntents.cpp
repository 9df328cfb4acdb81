#include <ParvelaKit/ParvelaIntents.h>
#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/Records.h>
#include <ParvelaKit/Text.h>

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
    return Failure(IntentError{IntentError::Case::call, error.message(), error});
}

Failure<IntentError> failed(const APIFailure& failure) {
    return failure.error() ? failed(*failure.error()) : Failure(IntentError{});
}

Failure<IntentError> unlinked(SecretStatus status) {
    return Failure(IntentError{IntentError::Case::call, noTokenText(status), APIError::missingToken()});
}

Failure<IntentError> misused(IntentError::Case kind, std::string message) {
    return Failure(IntentError{kind, std::move(message)});
}

Failure<IntentError> tooLong() {
    return misused(IntentError::Case::tooLong, "The text is too long.");
}

Outcome addTask(ParvelaSession session, OfflineQueue* queue, AddTaskIntent intent) {
    auto connecting = session.connect();
    const auto api = co_await connecting;
    if (!api) co_return unlinked(api.error());

    if (!intent.board) {
        if (const auto id = session.prefs().defaultBoardID()) {
            intent.board = BoardEntity{*id, session.prefs().defaultBoardName().value_or(std::string())};
        }
    }
    if (!intent.board) co_return misused(IntentError::Case::noBoard, noBoardText);

    QuickAddSubmission submission{
        .line = std::move(intent.title), .board = intent.board->id, .today = session.clock().today()};
    if (intent.dueDate) submission.dueDate = intent.dueDate->text();
    if (intent.priority) submission.priority = quickAddPriority(*intent.priority);
    auto submitting = queue->submit(std::move(submission), intent.board->name, *api);
    auto receipt = co_await submitting;
    if (!receipt) {
        const auto& failure = receipt.error().apiFailure();
        if (!failure) co_return misused(IntentError::Case::noTitle, receipt.error().message());
        co_return Failure(IntentError{IntentError::Case::call, receipt.error().message(), failure->error()});
    }
    if (!receipt->task) co_return IntentResult{receipt->note.value_or(std::string())};

    IntentResult result{fmt::format("Added {}: {}", receipt->task->key, receipt->task->title)};
    result.tasks.push_back(*std::move(receipt->task));
    result.note = std::move(receipt->note);
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
    auto connecting = session.connect();
    const auto api = co_await connecting;
    if (!api) co_return unlinked(api.error());
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

/// The key without blanks around it.
Result<std::string, IntentError> checkedKey(const std::string& key) {
    if (key.size() > ParvelaIntents::longestText) return tooLong();
    std::string cleaned(trimmed(key));
    if (cleaned.empty()) return misused(IntentError::Case::noKey, std::string(keyParameter.front().prompt));
    return cleaned;
}

Outcome openTask(ParvelaSession session, OpenTaskIntent intent, std::function<void(Url)> openURL) {
    const auto key = checkedKey(intent.key);
    if (!key) co_return Failure(key.error());
    auto connecting = session.connect();
    const auto api = co_await connecting;
    if (!api) co_return unlinked(api.error());
    auto call = api->send<TaskSummary>(Endpoint::task(*key));
    auto task = co_await call;
    if (!task) co_return failed(task.error());
    const ServerConfig server = session.server();
    const auto page = task->url ? server.appURL.resolving(*task->url) : server.appPage("/t/" + task->key);
    if (!page || !isWebAppPage(*page, server)) co_return failed(APIError::invalidResponse());
    openURL(*page);

    IntentResult result{"Open " + *key};
    result.tasks.push_back(*std::move(task));
    co_return result;
}

Outcome completeTask(ParvelaSession session, CompleteTaskIntent intent) {
    const auto key = checkedKey(intent.key);
    if (!key) co_return Failure(key.error());
    auto connecting = session.connect();
    const auto api = co_await connecting;
    if (!api) co_return unlinked(api.error());
    auto call = api->send<TaskSummary>(Endpoint::task(*key));
    auto task = co_await call;
    if (!task) co_return failed(task.error());
    auto completing = api->send<TaskSummary>(Endpoint::updateTask(*key, TaskPatch{.done = true}));
    auto completed = co_await completing;
    if (!completed) co_return failed(completed.error());

    IntentResult result{"Done: " + task->title};
    result.tasks.push_back(*std::move(completed));
    co_return result;
}

/// Every board when `ids` is none.
Task<Result<std::vector<BoardEntity>, IntentError>> findBoards(ParvelaSession session,
                                                               std::optional<std::vector<std::string>> ids) {
    auto connecting = session.connect();
    const auto api = co_await connecting;
    std::vector<BoardEntity> found;
    if (!api && api.error() == SecretStatus::notFound) co_return found;
    if (!api) co_return unlinked(api.error());
    auto call = api->send<BoardsResponse>(Endpoint::boards());
    auto answer = co_await call;
    if (!answer) co_return failed(answer.error());
    if (ids) std::ranges::sort(*ids);
    for (Board& board : answer->boards) {
        if (ids && !std::ranges::binary_search(*ids, board.id)) continue;
        found.push_back({std::move(board.id), std::move(board.name)});
    }
    co_return found;
}

/// The date that quick add would take from these words, when they are nothing but a date.
std::optional<CivilDate> dateFrom(const std::string& words, CivilDate today) {
    if (const auto date = CivilDate::parse(trimmed(words))) return date;
    const std::string title = "Task";
    const QuickAddContext context{
        .today = today, .members = std::vector<QuickAddMember>(), .labels = std::vector<QuickAddLabel>()};
    const auto result = QuickAdd::parse(title + " " + words, context);
    const bool onlyDate = result.title == title && !result.dueTime && !result.repeat &&
                          result.priority == QuickAddPriority::none && result.tokens.size() == 1;
    return onlyDate && result.dueDate ? CivilDate::parse(*result.dueDate) : std::nullopt;
}

/// What two names of the same board have in common.
std::string folded(const std::string& name) {
    return lowercased(trimmed(name));
}

/// By id, or by name without regard to case.
Result<BoardEntity, IntentError> boardNamed(const std::string& wanted, const std::vector<BoardEntity>& boards) {
    const auto byId = std::ranges::find(boards, wanted, &BoardEntity::id);
    if (byId != boards.end()) return *byId;
    const std::string name = folded(wanted);
    const BoardEntity* found = nullptr;
    std::string ids;
    for (const BoardEntity& board : boards) {
        if (folded(board.name) != name) continue;
        ids += (ids.empty() ? "" : ", ") + board.id;
        found = &board;
    }
    if (!found) return misused(IntentError::Case::unknownBoard, fmt::format("There is no board “{}”.", wanted));
    if (ids == found->id) return *found;
    return misused(IntentError::Case::ambiguousBoard,
                   fmt::format("Several boards are called “{}”. Name one by its id: {}.", wanted, ids));
}

Task<Result<AddTaskIntent, IntentError>> understood(ParvelaSession session, AddTaskWords words) {
    for (const auto* text : {&words.board, &words.due, &words.priority}) {
        if (*text && (*text)->size() > ParvelaIntents::longestText) co_return tooLong();
    }
    if (words.line.size() > ParvelaIntents::longestText) co_return tooLong();

    const CivilDate today = session.clock().today();
    const QuickAddSubmission submission{.line = words.line, .today = today};
    if (const auto draft = QuickAddService::parse(submission); !draft) {
        co_return misused(IntentError::Case::noTitle, draft.error().message());
    }
    AddTaskIntent intent{.title = std::move(words.line)};
    if (words.due) {
        intent.dueDate = dateFrom(*words.due, today);
        if (!intent.dueDate) {
            co_return misused(
                IntentError::Case::badDate,
                fmt::format("“{}” is not a date. Use YYYY-MM-DD, or words such as “tomorrow” or “next friday”.",
                            *words.due));
        }
    }
    if (words.priority) {
        intent.priority = TaskPriorityOptions::fromRawValue(asciiLowercased(*words.priority));
        if (!intent.priority) {
            co_return misused(IntentError::Case::badPriority,
                              fmt::format("“{}” is not a priority. Use low, medium, high or urgent.", *words.priority));
        }
    }
    // The default board needs no network, so a line for it can be kept while offline. Its name may have a namesake, and
    // is only believed when the boards can't be read.
    if (!words.board || words.board == session.prefs().defaultBoardID()) co_return intent;

    auto connecting = session.connect();
    const auto api = co_await connecting;
    if (!api) co_return unlinked(api.error());
    auto asking = findBoards(session, std::nullopt);
    const auto boards = co_await asking;
    if (!boards) {
        const auto name = session.prefs().defaultBoardName();
        if (session.prefs().defaultBoardID() && name && folded(*name) == folded(*words.board)) co_return intent;
        co_return Failure(boards.error());
    }
    auto board = boardNamed(*words.board, *boards);
    if (!board) co_return Failure(std::move(board.error()));
    intent.board = std::move(*board);
    co_return intent;
}

}  // namespace

std::string_view IntentError::name() const {
    switch (kind) {
        case Case::noBoard:
            return "NoBoard";
        case Case::noTitle:
            return "NoTitle";
        case Case::noKey:
            return "NoKey";
        case Case::unknownBoard:
            return "UnknownBoard";
        case Case::ambiguousBoard:
            return "AmbiguousBoard";
        case Case::badDate:
            return "BadDate";
        case Case::badPriority:
            return "BadPriority";
        case Case::tooLong:
            return "TooLong";
        case Case::call:
            break;
    }
    if (!apiError) return "Cancelled";
    switch (apiError->kind()) {
        case APIError::Case::forbidden:
            return "Forbidden";
        case APIError::Case::notFound:
            return "NotFound";
        case APIError::Case::badRequest:
            return "BadRequest";
        case APIError::Case::rateLimited:
            return "RateLimited";
        case APIError::Case::server:
            return "Server";
        case APIError::Case::missingToken:
            return "NotLinked";
        case APIError::Case::unauthorized:
            return "TokenRefused";
        case APIError::Case::offline:
            return "Offline";
        case APIError::Case::timedOut:
            return "TimedOut";
        case APIError::Case::invalidResponse:
            return "InvalidResponse";
        case APIError::Case::invalidURL:
            break;
    }
    return "InvalidServer";
}

bool IntentError::isMisuse() const {
    return kind != Case::call && kind != Case::noBoard;
}

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

Task<Result<AddTaskIntent, IntentError>> ParvelaIntents::understand(AddTaskWords words) const {
    return understood(session_, std::move(words));
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
