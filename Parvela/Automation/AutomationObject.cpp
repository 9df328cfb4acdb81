#include "Automation/AutomationObject.h"

#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/GLibPtr.h>

#include <utility>

namespace parvela {

namespace {

using Actions = std::shared_ptr<AutomationActions>;

std::optional<std::string> given(const char* text) {
    return *text == '\0' ? std::nullopt : std::optional<std::string>(text);
}

GVariant* strings(const std::vector<std::string>& texts) {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE_STRING_ARRAY);
    for (const std::string& text : texts) g_variant_builder_add(&list, "s", text.c_str());
    return g_variant_builder_end(&list);
}

void add(GVariantBuilder& task, const char* key, const std::string& value) {
    if (!value.empty()) g_variant_builder_add(&task, "{sv}", key, g_variant_new_string(value.c_str()));
}

GVariant* tasksVariant(const std::vector<TaskSummary>& tasks, const ServerConfig& server) {
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("aa{sv}"));
    for (const TaskSummary& task : tasks) {
        const auto page = task.url ? server.appURL.resolving(*task.url) : std::nullopt;
        GVariantBuilder entry;
        g_variant_builder_init(&entry, G_VARIANT_TYPE_VARDICT);
        add(entry, "id", task.id);
        add(entry, "key", task.key);
        add(entry, "title", task.title);
        add(entry, "board", task.board);
        add(entry, "boardId", task.boardId);
        add(entry, "list", task.list);
        add(entry, "listId", task.listId);
        add(entry, "priority", task.priority);
        add(entry, "dueDate", task.dueDate.value_or(""));
        add(entry, "dueTime", task.dueTime.value_or(""));
        add(entry, "url", page ? page->text() : "");
        g_variant_builder_add(&entry, "{sv}", "assignees", strings(task.assignees));
        g_variant_builder_add(&entry, "{sv}", "labels", strings(task.labels));
        g_variant_builder_add(&entry, "{sv}", "done", g_variant_new_boolean(task.done));
        g_variant_builder_add_value(&list, g_variant_builder_end(&entry));
    }
    return g_variant_builder_end(&list);
}

enum class Change { none, tasks };

/// `note` tells whether the answer has a third value.
enum class Note { none, last };

Task<void> answer(Actions actions, ParvelaIntents::Outcome outcome, Change change, Note note, Invocation invocation) {
    const auto result = co_await outcome;
    if (!result) {
        invocation.fail(result.error());
        co_return;
    }
    if (change == Change::tasks) actions->changed(result->tasks);
    GVariant* const tasks = tasksVariant(result->tasks, actions->session.server());
    if (note == Note::last) {
        invocation.answer(
            g_variant_new("(s@aa{sv}s)", result->dialog.c_str(), tasks, result->note.value_or("").c_str()));
    } else {
        invocation.answer(g_variant_new("(s@aa{sv})", result->dialog.c_str(), tasks));
    }
}

Task<void> addTask(Actions actions, AddTaskWords words, Invocation invocation) {
    auto understanding = actions->intents.understand(std::move(words));
    auto intent = co_await understanding;
    if (!intent) {
        invocation.fail(intent.error());
        co_return;
    }
    auto outcome = AutomationActions::add(actions, std::move(*intent));
    auto answering = answer(actions, std::move(outcome), Change::tasks, Note::last, std::move(invocation));
    co_await answering;
}

Task<void> boards(Actions actions, std::vector<std::string> ids, Invocation invocation) {
    auto asking = ids.empty() ? actions->intents.suggestedBoards() : actions->intents.boards(std::move(ids));
    const auto found = co_await asking;
    if (!found) {
        invocation.fail(found.error());
        co_return;
    }
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(ss)"));
    for (const BoardEntity& board : *found) {
        g_variant_builder_add(&list, "(ss)", board.id.c_str(), board.name.c_str());
    }
    invocation.answer(g_variant_new("(a(ss))", &list));
}

std::string keyIn(GVariant* values) {
    const char* key = nullptr;
    g_variant_get(values, "(&s)", &key);
    return key;
}

}  // namespace

void AutomationObject::call(const Actions& actions, const std::string& method, GVariant* values,
                            Invocation invocation) {
    if (method == "AddTask") {
        const char *title = nullptr, *board = nullptr, *due = nullptr, *priority = nullptr;
        g_variant_get(values, "(&s&s&s&s)", &title, &board, &due, &priority);
        AddTaskWords words{.line = title, .board = given(board), .due = given(due), .priority = given(priority)};
        addTask(actions, std::move(words), std::move(invocation)).detach();
    } else if (method == "DueToday") {
        auto outcome = actions->intents.perform(ShowTasksDueTodayIntent{});
        answer(actions, std::move(outcome), Change::none, Note::none, std::move(invocation)).detach();
    } else if (method == "OpenTask") {
        auto outcome = actions->intents.perform(OpenTaskIntent{keyIn(values)});
        answer(actions, std::move(outcome), Change::none, Note::none, std::move(invocation)).detach();
    } else if (method == "CompleteTask") {
        auto outcome = actions->intents.perform(CompleteTaskIntent{keyIn(values)});
        answer(actions, std::move(outcome), Change::tasks, Note::none, std::move(invocation)).detach();
    } else {
        StringsPtr ids;
        g_variant_get(values, "(^as)", ids.out());
        boards(actions, std::vector<std::string>(ids.get(), ids.get() + g_strv_length(ids.get())),
               std::move(invocation))
            .detach();
    }
}

GVariant* AutomationObject::property(const std::string& name) {
    if (name == "Version") return g_variant_new_string(std::string(BuildInfo::version()).c_str());
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(ssas)"));
    for (const IntentDescription& intent : ParvelaIntents::descriptions()) {
        g_variant_builder_add(&list, "(ss@as)", std::string(intent.title).c_str(),
                              std::string(intent.shortTitle).c_str(), strings(intent.phrasesFor("Parvela")));
    }
    return g_variant_builder_end(&list);
}

}  // namespace parvela
