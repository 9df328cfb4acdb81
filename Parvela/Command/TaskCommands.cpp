#include "TaskCommands.h"

#include "RunningProgram.h"

#include <ParvelaKit/Endpoint.h>
#include <ParvelaKit/OfflineQueue.h>
#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/Records.h>
#include <Platform/MainLoop.h>
#include <Platform/OfflineQueueEnvironment.h>

#include <algorithm>
#include <optional>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace parvela {

namespace {

/// The actions that every door of automation leads to, with what they stand on.
class Actions {
public:
    Actions(const CommandSession& session, const Console& console)
        : queue_(environment(session)), intents_(session.session, queue_, [this](const Url& page) { page_ = page; }) {
        if (const auto& notice = queue_.status().get().notice) console.warn(*notice);
    }

    const ParvelaIntents* operator->() const noexcept { return &intents_; }
    /// The page that an action wants to be shown.
    const std::optional<Url>& page() const noexcept { return page_; }

private:
    /// A command has no window that would freeze while many of its kind write.
    static OfflineQueue::Environment environment(const CommandSession& session) {
        auto environment = offlineQueueEnvironment(*session.clock);
        environment.filePatience = std::chrono::seconds(10);
        return environment;
    }

    OfflineQueue queue_;
    std::optional<Url> page_;
    ParvelaIntents intents_;
};

void report(const IntentResult& result, const Console& console) {
    console.line(result.dialog);
    if (result.note) console.line(*result.note);
}

template <class Value>
nlohmann::json orNull(const std::optional<Value>& value) {
    return value ? nlohmann::json(*value) : nlohmann::json();
}

/// What scripts are promised (docs/scripting.md), whatever the service calls it.
nlohmann::json taskJson(const TaskSummary& task, const ServerConfig& server) {
    const auto page = task.url ? server.appURL.resolving(*task.url) : std::nullopt;
    return {{"id", task.id},
            {"key", task.key},
            {"title", task.title},
            {"board", task.board},
            {"boardId", task.boardId},
            {"list", task.list},
            {"listId", task.listId},
            {"priority", task.priority},
            {"dueDate", orNull(task.dueDate)},
            {"dueTime", orNull(task.dueTime)},
            {"labels", task.labels},
            {"assignees", task.assignees},
            {"done", task.done},
            {"url", page ? nlohmann::json(page->text()) : nlohmann::json()}};
}

nlohmann::json taskJson(const IntentResult& result, const CommandSession& session) {
    return result.tasks.empty() ? nlohmann::json() : taskJson(result.tasks.front(), session.session.server());
}

std::string dueText(const TaskSummary& task, CivilDate today) {
    if (!task.dueDate) return {};
    const auto date = CivilDate::parse(*task.dueDate);
    std::string text = date ? QuickAdd::dateDisplayText(*date, today) : *task.dueDate;
    if (task.dueTime) text += ", " + QuickAdd::timeDisplayText(*task.dueTime);
    return text;
}

}  // namespace

ExitStatus addTask(AddTaskWords words, OutputForm form, const CommandSession& session, const Console& console) {
    const Actions actions(session, console);
    const bool namesBoard = words.board.has_value();
    auto intent = runUntilDone(actions->understand(std::move(words)));
    if (!intent) return console.fail(intent.error());
    if (!namesBoard && !session.session.prefs().defaultBoardID()) {
        // What the application makes the default board as soon as it knows the boards.
        auto boards = runUntilDone(actions->suggestedBoards());
        if (!boards) return console.fail(boards.error());
        if (!boards->empty()) intent->board = std::move(boards->front());
    }
    const auto result = runUntilDone(actions->perform(std::move(*intent)));
    if (!result) return console.fail(result.error());
    if (result->tasks.empty()) {
        RunningProgram::tellLinesWait();
    } else {
        RunningProgram::tellTasksChanged();
    }
    if (form == OutputForm::text) {
        report(*result, console);
        return ExitStatus::success;
    }
    const auto& note = result->tasks.empty() ? std::optional(result->dialog) : result->note;
    console.json({{"task", taskJson(*result, session)}, {"note", orNull(note)}});
    return ExitStatus::success;
}

ExitStatus showDueTasks(OutputForm form, const CommandSession& session, const Console& console) {
    const Actions actions(session, console);
    const auto result = runUntilDone(actions->perform(ShowTasksDueTodayIntent{}));
    if (!result) return console.fail(result.error());
    if (form == OutputForm::json) {
        const ServerConfig server = session.session.server();
        auto list = nlohmann::json::array();
        for (const TaskSummary& task : result->tasks) list.push_back(taskJson(task, server));
        console.json(list);
        return ExitStatus::success;
    }
    if (result->tasks.empty()) {
        console.line(result->dialog);
        return ExitStatus::success;
    }
    const CivilDate today = session.clock->today();
    std::vector<Console::Row> rows;
    for (const TaskSummary& task : result->tasks) {
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
    const auto api = runUntilDone(session.session.connect());
    if (!api) return console.fail(noTokenText(api.error()), ExitStatus::notLinked);
    const auto answered = runUntilDone(api->send<BoardsResponse>(Endpoint::boards()));
    // Nothing here cancels a call.
    if (!answered) return console.fail(answered.error().error().value_or(APIError::invalidResponse()));
    const auto defaultId = session.session.prefs().defaultBoardID();
    if (form == OutputForm::json) {
        auto list = nlohmann::json::array();
        for (const Board& board : answered->boards) {
            list.push_back({{"id", board.id}, {"name", board.name}, {"default", board.id == defaultId}});
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

ExitStatus openTask(const std::string& key, OutputForm form, const CommandSession& session, const Console& console) {
    const Actions actions(session, console);
    const auto result = runUntilDone(actions->perform(OpenTaskIntent{key}));
    if (!result) return console.fail(result.error());
    const std::vector<std::string> pages{actions.page()->text()};
    const bool isShown = RunningProgram::open(pages);
    if (!isShown) {
        // Nothing is written when the command fails.
        if (const auto problem = RunningProgram::obstacle()) return console.fail(*problem);
    }
    if (form == OutputForm::json) {
        console.json({{"task", taskJson(*result, session)}});
    } else {
        report(*result, console);
    }
    return isShown ? ExitStatus::success : console.fail(RunningProgram::become(pages));
}

ExitStatus completeTask(const std::string& key, OutputForm form, const CommandSession& session,
                        const Console& console) {
    const Actions actions(session, console);
    const auto result = runUntilDone(actions->perform(CompleteTaskIntent{key}));
    if (!result) return console.fail(result.error());
    RunningProgram::tellTasksChanged();
    if (form == OutputForm::json) {
        console.json({{"task", taskJson(*result, session)}});
    } else {
        report(*result, console);
    }
    return ExitStatus::success;
}

}  // namespace parvela
