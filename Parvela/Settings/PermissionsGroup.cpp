#include "Settings/PermissionsGroup.h"

#include "Settings/MessageLabel.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace parvela {

PermissionsGroup::PermissionsGroup(const Interface& interface, Preferences preferences)
    : preferences_(std::move(preferences)),
      group_(interface.get<AdwPreferencesGroup>("permissionsGroup")),
      none_(interface.get<GtkWidget>("noPermissions")) {
}

void PermissionsGroup::refresh() {
    auto answers = PagePermissions::answers(preferences_);
    gtk_widget_set_visible(none_, answers.empty());
    if (answers == answers_) return;
    answers_ = std::move(answers);
    connections_.clear();
    for (GtkWidget* const row : std::exchange(rows_, {})) adw_preferences_group_remove(group_, row);
    for (const PagePermissions::Answer& answer : answers_) add(answer);
}

void PermissionsGroup::add(const PagePermissions::Answer& answer) {
    GtkWidget* const row = adw_action_row_new();
    adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), answer.origin.c_str());
    adw_action_row_set_subtitle(ADW_ACTION_ROW(row),
                                fmt::format("{} {}", answer.allowed ? "Allowed:" : "Refused:", answer.kind).c_str());
    GtkWidget* const button = gtk_button_new_with_label("Forget");
    gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
    setAccessibleName(button, fmt::format("Forget {} of {}", answer.kind, answer.origin));
    adw_action_row_add_suffix(ADW_ACTION_ROW(row), button);
    adw_preferences_group_add(group_, row);
    rows_.push_back(row);
    connections_.push_back(
        connect<void(GtkButton*)>(button, "clicked", [this, answer](GtkButton*) { forget(answer); }));
}

void PermissionsGroup::forget(const PagePermissions::Answer& answer) {
    const auto index = static_cast<std::size_t>(std::ranges::find(answers_, answer) - answers_.begin());
    PagePermissions::forget(preferences_, PagePermissions::Answer(answer));
    refresh();
    // The focus went with the button that was pressed; the next one takes its place.
    GtkWidget* const next = rows_.empty() ? none_ : rows_[std::min(index, rows_.size() - 1)];
    gtk_widget_child_focus(next, GTK_DIR_TAB_FORWARD);
}

}  // namespace parvela
