#include "TaskCommands.h"

#include "RunningProgram.h"

#include <ParvelaKit/Endpoint.h>
#include <ParvelaKit/Json/Encoder.h>
#include <ParvelaKit/OfflineQueue.h>
#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/Records.h>
#include <ParvelaKit/Text.h>
#include <Platform/MainLoop.h>
#include <Platform/OfflineQueueEnvironment.h>

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

/// Why a command ends early: its message is already on the console.
using Stopped = Failure<ExitStatus>;

/// The service's answer, or the status after its error was shown.
template <class T>
Result<T, ExitStatus> answer(Task<Result<T, APIFailure>> call, const Console& console) {
    auto result = runUntilDone(std::move(call));
    if (result) return std::move(*result);
    // Nothing here cancels a call.
    const auto& error = result.error().error();
    return Stopped(error ? console.fail(*error) : ExitStatus::failure);
}

Result<ParvelaAPI, ExitStatus> client(const CommandSession& session, const Console& console) {
    auto api = runUntilDone(session.session.client());
    if (!api) return Stopped(console.fail(APIError::missingToken()));
    return std::move(*api);
}

struct ChosenBoard {
    std::string id;
    std::string name;
};

/// By id, or by name without regard to case.
Result<ChosenBoard, ExitStatus> boardNamed(const std::string& wanted, const std::vector<Board>& boards,
                                           const Console& console) {
    const auto byId = std::ranges::find(boards, wanted, &Board::id);
    if (byId != boards.end()) return ChosenBoard{byId->id, byId->name};
    const std::string name = lowercased(trimmed(wanted));
    std::vector<Board> matching;
    std::ranges::copy_if(boards, std::back_inserter(matching),
                         [&name](const Board& board) { return lowercased(trimmed(board.name)) == name; });
    if (matching.size() == 1) return ChosenBoard{matching.front().id, matching.front().name};
    if (matching.empty()) {
        return Stopped(console.fail(fmt::format("There is no board “{}”. “parvela boards” lists them.", wanted),
                                    ExitStatus::usage));
    }
    std::string ids;
    for (const Board& board : matching) ids += (ids.empty() ? "" : ", ") + board.id;
    return Stopped(console.fail(fmt::format("Several boards are called “{}”. Name one by its id: {}.", wanted, ids),
                                ExitStatus::usage));
}

Result<ChosenBoard, ExitStatus> chooseBoard(const std::optional<std::string>& wanted, const CommandSession& session,
                                            const ParvelaAPI& api, const Console& console) {
    const Preferences& preferences = session.session.prefs();
    const auto defaultId = preferences.defaultBoardID();
    const std::string defaultName = preferences.defaultBoardName().value_or("");
    // The default board needs no network, so a line for it can be kept while offline.
    if (defaultId && (!wanted || *wanted == *defaultId)) return ChosenBoard{*defaultId, defaultName};
    const auto answered = answer(api.send<BoardsResponse>(Endpoint::boards()), console);
    if (!answered) return Stopped(answered.error());
    if (wanted) return boardNamed(*wanted, answered->boards, console);
    if (answered->boards.empty()) return Stopped(console.fail("Pick a default board in Settings first."));
    return ChosenBoard{answered->boards.front().id, answered->boards.front().name};
}

/// The date that quick add would take from these words, when they are nothing but a date.
std::optional<std::string> dateFrom(const std::string& words, CivilDate today) {
    if (const auto date = CivilDate::parse(trimmed(words))) return date->text();
    const std::string title = "Task";
    const QuickAddContext context{
        .today = today, .members = std::vector<QuickAddMember>(), .labels = std::vector<QuickAddLabel>()};
    auto result = QuickAdd::parse(title + " " + words, context);
    const bool onlyDate = result.title == title && !result.dueTime && !result.repeat &&
                          result.priority == QuickAddPriority::none && result.tokens.size() == 1;
    return onlyDate ? std::move(result.dueDate) : std::nullopt;
}

Result<QuickAddSubmission, ExitStatus> submissionFrom(const AddOptions& options, CivilDate today,
                                                      const Console& console) {
    QuickAddSubmission submission{.line = options.line, .today = today};
    if (options.due) {
        submission.dueDate = dateFrom(*options.due, today);
        if (!submission.dueDate) {
            return Stopped(console.fail(
                fmt::format("“{}” is not a date. Use YYYY-MM-DD, or words such as “tomorrow” or “next friday”.",
                            *options.due),
                ExitStatus::usage));
        }
    }
    if (options.priority) {
        submission.priority = QuickAdd::priorityFromApiString(asciiLowercased(*options.priority));
        if (!submission.priority) {
            return Stopped(console.fail(
                fmt::format("“{}” is not a priority. Use none, low, medium, high or urgent.", *options.priority),
                ExitStatus::usage));
        }
    }
    return submission;
}

ExitStatus report(const QuickAddReceipt& receipt, OutputForm form, const Console& console) {
    if (form == OutputForm::json) {
        auto json = nlohmann::json::object();
        json["task"] = receipt.task ? json::toJson(*receipt.task) : nlohmann::json();
        json["note"] = receipt.note ? nlohmann::json(*receipt.note) : nlohmann::json();
        console.json(json);
        return ExitStatus::success;
    }
    if (receipt.task) console.line(fmt::format("Added {}: {}", receipt.task->key, receipt.task->title));
    if (receipt.note) console.line(*receipt.note);
    return ExitStatus::success;
}

std::string dueText(const TaskSummary& task, CivilDate today) {
    if (!task.dueDate) return {};
    const auto date = CivilDate::parse(*task.dueDate);
    std::string text = date ? QuickAdd::dateDisplayText(*date, today) : *task.dueDate;
    if (task.dueTime) text += ", " + QuickAdd::timeDisplayText(*task.dueTime);
    return text;
}

}  // namespace

ExitStatus addTask(const AddOptions& options, const CommandSession& session, const Console& console) {
    auto submission = submissionFrom(options, session.clock->today(), console);
    if (!submission) return submission.error();
    if (const auto draft = QuickAddService::parse(*submission); !draft) {
        return console.fail(draft.error().message(), ExitStatus::usage);
    }
    const auto api = client(session, console);
    if (!api) return api.error();
    const auto board = chooseBoard(options.board, session, *api, console);
    if (!board) return board.error();
    submission->board = board->id;

    OfflineQueue queue(offlineQueueEnvironment(*session.clock));
    if (const auto& notice = queue.status().get().notice) console.warn(*notice);
    const auto receipt = runUntilDone(queue.submit(std::move(*submission), board->name, *api));
    if (receipt) {
        if (!receipt->task) RunningProgram::tellLinesWait();
        return report(*receipt, options.form, console);
    }
    const auto& failure = receipt.error().apiFailure();
    return failure && failure->error() ? console.fail(*failure->error()) : console.fail(receipt.error().message());
}

ExitStatus showDueTasks(OutputForm form, const CommandSession& session, const Console& console) {
    const auto api = client(session, console);
    if (!api) return api.error();
    auto answered = answer(api->send<TasksResponse>(Endpoint::tasks({.due = DueFilter::today})), console);
    if (!answered) return answered.error();
    auto& tasks = answered->tasks;
    std::erase_if(tasks, &TaskSummary::done);
    if (form == OutputForm::json) {
        console.json(json::toJson(tasks));
        return ExitStatus::success;
    }
    if (tasks.empty()) {
        console.line("Nothing due today.");
        return ExitStatus::success;
    }
    const CivilDate today = session.clock->today();
    std::vector<Console::Row> rows;
    for (const TaskSummary& task : tasks) {
        const bool overdue = task.dueDate && *task.dueDate < today.text();
        rows.push_back({{task.key},
                        {task.title},
                        {dueText(task, today), overdue ? Console::Style::warning : Console::Style::plain},
                        {task.board, Console::Style::dim}});
    }
    console.table(rows);
    return ExitStatus::success;
}

ExitStatus showBoards(OutputForm form, const CommandSession& session, const Console& console) {
    const auto api = client(session, console);
    if (!api) return api.error();
    const auto answered = answer(api->send<BoardsResponse>(Endpoint::boards()), console);
    if (!answered) return answered.error();
    const auto defaultId = session.session.prefs().defaultBoardID();
    if (form == OutputForm::json) {
        auto list = nlohmann::json::array();
        for (const Board& board : answered->boards) {
            auto entry = json::toJson(board);
            entry["default"] = board.id == defaultId;
            list.push_back(std::move(entry));
        }
        console.json(list);
        return ExitStatus::success;
    }
    std::vector<Console::Row> rows;
    for (const Board& board : answered->boards) {
        rows.push_back({{board.id == defaultId ? "*" : " "}, {board.name}, {board.id, Console::Style::dim}});
    }
    console.table(rows);
    return ExitStatus::success;
}

ExitStatus completeTask(const std::string& key, const CommandSession& session, const Console& console) {
    const auto api = client(session, console);
    if (!api) return api.error();
    const auto task = answer(api->send<TaskSummary>(Endpoint::task(key)), console);
    if (!task) return task.error();
    const TaskPatch done{.done = true};
    const auto changed = answer(api->send<TaskSummary>(Endpoint::updateTask(task->key, done)), console);
    if (!changed) return changed.error();
    console.line("Done: " + task->title);
    return ExitStatus::success;
}

}  // namespace parvela
