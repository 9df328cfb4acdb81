#include "Settings/DiagnosticsPage.h"

#include <utility>

namespace parvela {

namespace {

struct Look {
    const char* icon;
    const char* style;
    const char* name;
};

Look lookOf(Diagnostic::Verdict verdict) {
    switch (verdict) {
        case Diagnostic::Verdict::good:
            return {"emblem-ok-symbolic", "success", "Good"};
        case Diagnostic::Verdict::notice:
            return {"dialog-warning-symbolic", "warning", "Notice"};
        case Diagnostic::Verdict::problem:
            break;
    }
    return {"dialog-error-symbolic", "error", "Problem"};
}

GtkWidget* makeRow(const Diagnostic& diagnostic) {
    const Look look = lookOf(diagnostic.verdict);
    GtkWidget* const row = adw_action_row_new();
    adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), diagnostic.what.c_str());
    const std::string text = diagnostic.finding + (diagnostic.remedy.empty() ? "" : "\n" + diagnostic.remedy);
    adw_action_row_set_subtitle(ADW_ACTION_ROW(row), text.c_str());
    adw_action_row_set_subtitle_lines(ADW_ACTION_ROW(row), 0);
    GtkWidget* const icon = gtk_image_new_from_icon_name(look.icon);
    gtk_widget_add_css_class(icon, look.style);
    // The verdict is in the icon alone, so it has to have a name.
    gtk_widget_set_tooltip_text(icon, look.name);
    gtk_accessible_update_property(GTK_ACCESSIBLE(icon), GTK_ACCESSIBLE_PROPERTY_LABEL, look.name, -1);
    adw_action_row_add_prefix(ADW_ACTION_ROW(row), icon);
    return row;
}

}  // namespace

std::shared_ptr<DiagnosticsPage> DiagnosticsPage::create(std::shared_ptr<const SettingsEnvironment> environment) {
    const std::shared_ptr<DiagnosticsPage> page(new DiagnosticsPage(std::move(environment)));
    page->start();
    return page;
}

DiagnosticsPage::DiagnosticsPage(std::shared_ptr<const SettingsEnvironment> environment)
    : environment_(std::move(environment)), page_(interface_.get<AdwPreferencesPage>("page")) {
}

void DiagnosticsPage::start() {
    connections_.push_back(connect<void(GtkWidget*)>(page_, "map", [this](GtkWidget*) { check(); }));
    connections_.push_back(
        connect<void(GtkButton*)>(interface_.get<GtkButton>("check"), "clicked", [this](GtkButton*) { check(); }));
    connections_.push_back(
        connect<void(GtkButton*)>(interface_.get<GtkButton>("copy"), "clicked", [this](GtkButton*) { copy(); }));
}

void DiagnosticsPage::check() {
    if (std::exchange(isChecking_, true)) return;
    gtk_spinner_start(interface_.get<GtkSpinner>("spinner"));
    run(weak_from_this(), {.session = environment_->model->session,
                           .queue = environment_->queueStatus(),
                           .transport = environment_->transport,
                           .applicationId = PARVELA_APP_ID})
        .detach();
}

Task<void> DiagnosticsPage::run(std::weak_ptr<DiagnosticsPage> self, Diagnostics::Subject subject) {
    auto running = Diagnostics::run(std::move(subject));
    auto rows = co_await running;
    if (const auto page = self.lock()) page->show(std::move(rows));
}

void DiagnosticsPage::show(std::vector<Diagnostic> rows) {
    isChecking_ = false;
    gtk_spinner_stop(interface_.get<GtkSpinner>("spinner"));
    gtk_widget_set_sensitive(interface_.get<GtkWidget>("copy"), TRUE);
    if (rows == rows_) return;  // so that a reader keeps the place
    auto* const group = interface_.get<AdwPreferencesGroup>("group");
    for (GtkWidget* const row : std::exchange(shown_, {})) adw_preferences_group_remove(group, row);
    rows_ = std::move(rows);
    for (const Diagnostic& diagnostic : rows_) {
        shown_.push_back(makeRow(diagnostic));
        adw_preferences_group_add(group, shown_.back());
    }
}

void DiagnosticsPage::copy() {
    gdk_clipboard_set_text(gtk_widget_get_clipboard(GTK_WIDGET(page_)), Diagnostics::text(rows_).c_str());
    if (showToast) showToast("The report is on the clipboard.");
}

}  // namespace parvela
