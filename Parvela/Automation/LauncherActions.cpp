#include "Automation/LauncherActions.h"

#include <ParvelaKit/Text.h>

#include <utility>

namespace parvela {

namespace {

using Actions = std::shared_ptr<AutomationActions>;

Task<void> showDueTasks(Actions actions) {
    auto asking = actions->intents.perform(ShowTasksDueTodayIntent{});
    const auto result = co_await asking;
    if (result) {
        actions->surfaces.notify("Due Today", result->dialog, actions->session.server().appPage("/my"));
    } else {
        actions->surfaces.showAlert("Couldn't show what is due today", result.error().message);
    }
}

Task<void> openTask(Actions actions, std::string key) {
    auto opening = actions->intents.perform(OpenTaskIntent{key});
    const auto result = co_await opening;
    if (!result) actions->surfaces.showAlert("Couldn't open " + key, result.error().message);
}

Task<void> completeTask(Actions actions, std::string key) {
    auto completing = actions->intents.perform(CompleteTaskIntent{key});
    const auto result = co_await completing;
    if (!result) {
        actions->surfaces.showAlert("Couldn't complete " + key, result.error().message);
        co_return;
    }
    actions->surfaces.notify(result->dialog, "", std::nullopt);
    actions->changed(result->tasks);
}

}  // namespace

LauncherActions::LauncherActions(GApplication* application, Actions actions, std::function<void()> showQuickAdd,
                                 std::function<GtkWindow*()> parent)
    : actions_(std::move(actions)), parent_(std::move(parent)) {
    const auto intents = ParvelaIntents::descriptions();
    define(application, "add-task", std::move(showQuickAdd));
    define(application, "due-today", [this] { showDueTasks(actions_).detach(); });
    define(application, "open-task", [this, &intent = intents[2]] {
        askForKey(intent, [actions = actions_](std::string key) { openTask(actions, std::move(key)).detach(); });
    });
    define(application, "complete-task", [this, &intent = intents[3]] {
        askForKey(intent, [actions = actions_](std::string key) { completeTask(actions, std::move(key)).detach(); });
    });
}

void LauncherActions::define(GApplication* application, const char* name, std::function<void()> handler) {
    const auto action = Ref<GSimpleAction>::adopt(g_simple_action_new(name, nullptr));
    connections_.push_back(connect<void(GSimpleAction*, GVariant*)>(
        action.get(), "activate", [handler = std::move(handler)](GSimpleAction*, GVariant*) { handler(); }));
    g_action_map_add_action(G_ACTION_MAP(application), G_ACTION(action.get()));
}

void LauncherActions::askForKey(const IntentDescription& intent, std::function<void(std::string)> then) {
    const IntentParameter& parameter = intent.parameters.front();
    const std::string title(intent.title);
    Question& question = questions_[title];
    if (question.dialog) {
        gtk_window_present(GTK_WINDOW(question.dialog));
        return;
    }
    GtkWidget* const shown = adw_message_dialog_new(parent_(), title.c_str(), std::string(parameter.prompt).c_str());
    AdwMessageDialog* const dialog = ADW_MESSAGE_DIALOG(shown);
    GtkWidget* const entry = gtk_entry_new();
    gtk_entry_set_activates_default(GTK_ENTRY(entry), TRUE);
    gtk_accessible_update_property(GTK_ACCESSIBLE(entry), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   std::string(parameter.title).c_str(), -1);
    adw_message_dialog_set_extra_child(dialog, entry);
    adw_message_dialog_add_responses(dialog, "cancel", "Cancel", "perform", title.c_str(), nullptr);
    adw_message_dialog_set_response_appearance(dialog, "perform", ADW_RESPONSE_SUGGESTED);
    adw_message_dialog_set_default_response(dialog, "perform");
    adw_message_dialog_set_close_response(dialog, "cancel");
    adw_message_dialog_set_response_enabled(dialog, "perform", FALSE);
    question.dialog = shown;
    question.connections.clear();
    question.connections.push_back(
        connect<void(GtkWidget*)>(shown, "destroy", [&question](GtkWidget*) { question.dialog = nullptr; }));
    question.connections.push_back(connect<void(GtkEditable*)>(entry, "changed", [dialog](GtkEditable* text) {
        adw_message_dialog_set_response_enabled(dialog, "perform", !trimmed(gtk_editable_get_text(text)).empty());
    }));
    question.connections.push_back(connect<void(AdwMessageDialog*, const char*)>(
        dialog, "response", [entry, then = std::move(then)](AdwMessageDialog*, const char* response) {
            if (std::string_view(response) != "perform") return;
            then(std::string(trimmed(gtk_editable_get_text(GTK_EDITABLE(entry)))));
        }));
    gtk_window_present(GTK_WINDOW(shown));
    gtk_widget_grab_focus(entry);
}

}  // namespace parvela
