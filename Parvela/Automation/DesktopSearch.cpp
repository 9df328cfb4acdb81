#include "Automation/DesktopSearch.h"

#include <ParvelaKit/BoardView.h>
#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/QuickAddParser.h>
#include <ParvelaKit/QuickAddRecords.h>
#include <ParvelaKit/ShownTitle.h>
#include <ParvelaKit/Text.h>

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

using Actions = std::shared_ptr<AutomationActions>;

constexpr std::string_view taskPrefix = "task:";
constexpr std::string_view boardPrefix = "board:";
constexpr std::string_view addPrefix = "add:";
/// Of those that find() gives.
constexpr std::size_t longestId = addPrefix.size() + TaskIndex::longestSearch;
/// The longest first.
constexpr std::array<std::string_view, 5> wishes = {"add a task ", "add task ", "new task ", "quick add ", "add "};

void append(std::string& detail, std::string_view part) {
    if (part.empty()) return;
    if (!detail.empty()) detail += " · ";
    detail += part;
}

Finding taskFinding(const TaskIndex::Entry& task, CivilDate today) {
    std::string detail = task.key;
    append(detail, task.board);
    if (task.dueDate) {
        const auto date = CivilDate::parse(*task.dueDate);
        append(detail, date ? QuickAdd::dateDisplayText(*date, today) : *task.dueDate);
        if (task.dueTime) append(detail, QuickAdd::timeDisplayText(*task.dueTime));
    }
    if (task.done) append(detail, "Done");
    return {.kind = Finding::Kind::task,
            .id = std::string(taskPrefix) + task.key,
            .title = task.title,
            .detail = std::move(detail)};
}

Finding boardFinding(const BoardEntity& board) {
    return {.kind = Finding::Kind::board,
            .id = std::string(boardPrefix) + board.id,
            .title = board.name,
            .detail = "Board in Parvela"};
}

/// None for a line that would be refused.
std::optional<Finding> addFinding(const AutomationActions& actions, const std::string& line) {
    const CivilDate today = actions.session.clock().today();
    const auto result = QuickAdd::parse(line, QuickAddContext{.today = today, .members = {}, .labels = {}});
    if (result.title.empty()) return std::nullopt;
    std::string detail = "Add Task";
    for (const QuickAddToken& token : result.tokens) append(detail, token.display);
    append(detail, actions.session.prefs().defaultBoardName().value_or(""));
    return Finding{.kind = Finding::Kind::add,
                   .id = std::string(addPrefix) + line,
                   .title = fmt::format("Add “{}”", result.title),
                   .detail = std::move(detail)};
}

Url pageOf(const AutomationActions& actions, const TaskSummary& task) {
    const ServerConfig server = actions.session.server();
    const auto page = task.url ? server.appURL.resolving(*task.url) : std::nullopt;
    return page && server.isInApp(*page) ? *page : server.appPage("/t/" + task.key);
}

Task<void> add(Actions actions, std::string line, CallGate::Ticket /*ticket*/) {
    AddTaskIntent intent{.title = line};
    auto adding = AutomationActions::add(actions, std::move(intent));
    const auto result = co_await adding;
    if (!result) {
        actions->surfaces.showAlert(fmt::format("Couldn't add “{}”", shownTitle(line)), result.error().message);
    } else if (result->tasks.empty()) {
        actions->surfaces.notify(result->dialog, line, std::nullopt);
    } else {
        const TaskSummary& task = result->tasks.front();
        actions->surfaces.notify(fmt::format("Added {} — {}", task.key, shownTitle(task.title)),
                                 result->note.value_or(""), pageOf(*actions, task));
        actions->changed(result->tasks);
    }
}

Task<void> openTask(Actions actions, std::string key, CallGate::Ticket /*ticket*/) {
    auto opening = actions->intents.perform(OpenTaskIntent{key});
    const auto result = co_await opening;
    if (!result) actions->surfaces.showAlert("Couldn't open " + key, result.error().message);
}

}  // namespace

std::vector<Finding> DesktopSearch::find(const AutomationActions& actions, std::string_view phrase) {
    std::vector<Finding> findings;
    phrase = trimmed(phrase);
    if (!actions.known->isKnown() || phrase.empty() || phrase.size() > TaskIndex::longestSearch) return findings;

    const std::string lower = asciiLowercased(phrase);
    const auto wish = std::ranges::find_if(wishes, [&](std::string_view one) { return lower.starts_with(one); });
    if (wish != wishes.end()) {
        if (auto finding = addFinding(actions, std::string(trimmed(phrase.substr(wish->size()))))) {
            finding->isExact = true;
            findings.push_back(std::move(*finding));
        }
    }
    const TaskIndex& index = actions.known->index();
    const CivilDate today = actions.session.clock().today();
    for (const auto* task : index.tasks(phrase, mostTasks)) {
        findings.push_back(taskFinding(*task, today));
        findings.back().isExact = equalsIgnoringAsciiCase(task->key, phrase);
    }
    for (const auto* board : index.boards(phrase, mostBoards)) {
        findings.push_back(boardFinding(*board));
        findings.back().isExact = lowercased(board->name) == lowercased(phrase);
    }
    if (wish == wishes.end() && phrase.find_first_of(" \t\n") != std::string_view::npos) {
        if (auto finding = addFinding(actions, std::string(phrase))) findings.push_back(std::move(*finding));
    }
    return findings;
}

std::optional<Finding> DesktopSearch::describe(const AutomationActions& actions, const std::string& id) {
    if (id.starts_with(taskPrefix)) {
        const auto* task = actions.known->index().task(std::string_view(id).substr(taskPrefix.size()));
        return task ? std::optional(taskFinding(*task, actions.session.clock().today())) : std::nullopt;
    }
    if (id.starts_with(boardPrefix)) {
        const auto* board = actions.known->index().board(std::string_view(id).substr(boardPrefix.size()));
        return board ? std::optional(boardFinding(*board)) : std::nullopt;
    }
    if (id.starts_with(addPrefix) && id.size() <= longestId) {
        return addFinding(actions, id.substr(addPrefix.size()));
    }
    return std::nullopt;
}

void DesktopSearch::activate(const Actions& actions, const std::string& id, CallGate::Ticket ticket) {
    if (id.size() > longestId) return;
    if (id.starts_with(taskPrefix)) {
        openTask(actions, id.substr(taskPrefix.size()), std::move(ticket)).detach();
    } else if (id.starts_with(boardPrefix)) {
        const auto* board = actions->known->index().board(std::string_view(id).substr(boardPrefix.size()));
        if (board) actions->surfaces.openURL(BoardView::page(board->id, 0, actions->session.server()));
    } else if (id.starts_with(addPrefix)) {
        add(actions, id.substr(addPrefix.size()), std::move(ticket)).detach();
    }
}

void DesktopSearch::open(const AutomationActions& actions, std::string_view phrase) {
    if (phrase.size() > TaskIndex::longestSearch) return;
    const CharPtr escaped(g_uri_escape_string(std::string(trimmed(phrase)).c_str(), nullptr, FALSE));
    actions.surfaces.openURL(actions.session.server().appPageAt("/search?q=" + std::string(escaped.get())));
}

}  // namespace parvela
