#include "Settings/NotificationsPage.h"

#include "Settings/MessageLabel.h"

#include <utility>

namespace parvela {

namespace {

/// Passing by a time on the way to another must not send the summary of a time that has just gone by.
constexpr std::chrono::milliseconds rest{1500};

}  // namespace

std::shared_ptr<NotificationsPage> NotificationsPage::create(std::shared_ptr<const SettingsEnvironment> environment) {
    return std::shared_ptr<NotificationsPage>(new NotificationsPage(std::move(environment)));
}

NotificationsPage::NotificationsPage(std::shared_ptr<const SettingsEnvironment> environment)
    : environment_(std::move(environment)),
      page_(interface_.get<AdwPreferencesPage>("page")),
      enabled_(interface_.get<GtkSwitch>("enabled")),
      summary_(interface_.get<GtkSwitch>("summary")),
      time_(interface_.get<GtkSpinButton>("time")) {
    connections_.push_back(
        connect<void(GtkSwitch*, GParamSpec*)>(enabled_, "notify::active", [this](GtkSwitch*, GParamSpec*) {
            if (!filling_)
                environment_->preferences().setNotificationsEnabled(gtk_switch_get_active(enabled_) != FALSE);
        }));
    connections_.push_back(connect<void(GtkSwitch*, GParamSpec*)>(
        summary_, "notify::active", [this](GtkSwitch*, GParamSpec*) { changeSummary(); }));
    connectTime();
    connections_.push_back(
        connect<void(GtkButton*)>(interface_.get<GtkButton>("send"), "clicked", [this](GtkButton*) { send(); }));
    gtk_widget_set_visible(interface_.get<GtkWidget>("summaryGroup"), environment_->sendSummary != nullptr);
    if (const auto* const access = environment_->notificationAccess) {
        accessChanged_ = access->observe([this](NotificationAccess now) { showAccess(now); });
        showAccess(access->get());
    }
    refresh();
}

void NotificationsPage::connectTime() {
    setAccessibleName(GTK_WIDGET(time_), "Time of the daily summary");
    connections_.push_back(connect<gboolean(GtkSpinButton*)>(time_, "output", [this](GtkSpinButton*) {
        const std::string text = timeText(gtk_spin_button_get_value_as_int(time_), hours_);
        // Setting the same text would move the caret.
        if (text != gtk_editable_get_text(GTK_EDITABLE(time_))) {
            gtk_editable_set_text(GTK_EDITABLE(time_), text.c_str());
        }
        return gboolean{TRUE};
    }));
    connections_.push_back(connect<int(GtkSpinButton*, double*)>(time_, "input", [this](GtkSpinButton*, double* value) {
        const auto minutes = timeFromText(gtk_editable_get_text(GTK_EDITABLE(time_)));
        if (!minutes) return static_cast<int>(GTK_INPUT_ERROR);
        *value = *minutes;
        return static_cast<int>(TRUE);
    }));
    connections_.push_back(
        connect<void(GtkSpinButton*)>(time_, "value-changed", [this](GtkSpinButton*) { changeTime(); }));
}

/// What the desktop does with notifications, which the switch here cannot change.
void NotificationsPage::showAccess(NotificationAccess access) {
    std::string text;
    switch (access) {
        case NotificationAccess::missing:
            text =
                "Nothing on this desktop shows notifications. Start a notification service to see them; until then "
                "they appear in Parvela's front window.";
            break;
        case NotificationAccess::switchedOff:
            text = "Parvela's notifications are switched off in the desktop's settings. Switch them on there.";
            break;
        case NotificationAccess::unknown:
        case NotificationAccess::available:
            break;
    }
    showMessage(interface_.get<GtkLabel>("accessMessage"), nullptr, text, Tone::warning);
}

void NotificationsPage::changeSummary() {
    if (filling_) return;
    environment_->preferences().setDailySummaryEnabled(gtk_switch_get_active(summary_) != FALSE);
    environment_->summaryChanged();
    refresh();
}

void NotificationsPage::changeTime() {
    if (filling_) return;
    environment_->preferences().setDailySummaryMinutes(gtk_spin_button_get_value_as_int(time_));
    settling_ = MainLoopTimer(rest, [this] { environment_->summaryChanged(); });
}

void NotificationsPage::send() {
    gtk_widget_set_sensitive(interface_.get<GtkWidget>("send"), FALSE);
    showMessage(interface_.get<GtkLabel>("summaryMessage"), nullptr, "Sending…", Tone::hint);
    report(weak_from_this(), environment_->sendSummary()).detach();
}

Task<void> NotificationsPage::report(std::weak_ptr<NotificationsPage> self, Task<std::string> outcome) {
    const std::string text = co_await outcome;
    const auto page = self.lock();
    if (!page) co_return;
    gtk_widget_set_sensitive(page->interface_.get<GtkWidget>("send"), TRUE);
    showMessage(page->interface_.get<GtkLabel>("summaryMessage"), nullptr, text, Tone::hint);
}

void NotificationsPage::refresh() {
    filling_ = true;
    const Preferences& preferences = environment_->preferences();
    gtk_switch_set_active(enabled_, preferences.notificationsEnabled());
    gtk_switch_set_active(summary_, preferences.dailySummaryEnabled());
    const auto minutes = preferences.dailySummaryMinutes();
    gtk_spin_button_set_value(time_, static_cast<double>(minutes));
    gtk_widget_set_sensitive(interface_.get<GtkWidget>("timeRow"), preferences.dailySummaryEnabled());
    filling_ = false;
}

}  // namespace parvela
