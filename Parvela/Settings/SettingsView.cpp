#include "Settings/SettingsView.h"

#include "Settings/AccountPage.h"
#include "Settings/DiagnosticsPage.h"
#include "Settings/GeneralPage.h"
#include "Settings/MessageLabel.h"
#include "Settings/NotificationsPage.h"
#include "Settings/ServerPage.h"
#include "Support/Interface.h"

#include <algorithm>
#include <array>
#include <utility>

namespace parvela {

namespace {

/// In the order of SettingsPage.
constexpr std::array pageNames =
    std::to_array<const char*>({"server", "general", "notifications", "account", "diagnostics"});

constexpr int defaultWidth = 680;
constexpr int defaultHeight = 640;
constexpr int roomForTitleBars = 60;

void addShortcut(GtkWidget* widget, const char* keys, std::function<void()> action) {
    GtkEventController* const controller = gtk_shortcut_controller_new();
    gtk_shortcut_controller_set_scope(GTK_SHORTCUT_CONTROLLER(controller), GTK_SHORTCUT_SCOPE_MANAGED);
    GtkShortcutAction* const callback = gtk_callback_action_new(
        [](GtkWidget*, GVariant*, gpointer data) -> gboolean {
            (*static_cast<std::function<void()>*>(data))();
            return TRUE;
        },
        new std::function<void()>(std::move(action)),
        [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
    gtk_shortcut_controller_add_shortcut(GTK_SHORTCUT_CONTROLLER(controller),
                                         gtk_shortcut_new(gtk_shortcut_trigger_parse_string(keys), callback));
    gtk_widget_add_controller(widget, controller);
}

}  // namespace

SettingsView::SettingsView(GtkApplication* application, SettingsEnvironment environment)
    : environment_(std::make_shared<const SettingsEnvironment>(std::move(environment))),
      window_(Interface("SettingsWindow.ui").get<AdwPreferencesWindow>("window")),
      server_(ServerPage::create(environment_)),
      general_(GeneralPage::create(environment_)),
      notifications_(NotificationsPage::create(environment_)),
      account_(AccountPage::create(environment_)),
      diagnostics_(DiagnosticsPage::create(environment_)) {
    gtk_window_set_application(GTK_WINDOW(window_), application);
    for (AdwPreferencesPage* const page : {server_->widget(), general_->widget(), notifications_->widget(),
                                           account_->widget(), diagnostics_->widget()}) {
        adw_preferences_window_add(window_, page);
        nameButtons(GTK_WIDGET(page));
    }
    general_->showToast = notifications_->showToast = account_->showToast =
        diagnostics_->showToast = [this](const std::string& text) { showToast(text); };
    addKeys();
    // Other windows and programs change things too.
    connections_.push_back(
        connect<void(GtkWindow*, GParamSpec*)>(window_, "notify::is-active", [this](GtkWindow* window, GParamSpec*) {
            if (gtk_window_is_active(window)) refresh();
        }));
    connections_.push_back(connect<gboolean(GtkWindow*)>(window_, "close-request", [this](GtkWindow* window) {
        if (const auto position = windowPosition(window)) position_ = position;
        return gboolean{FALSE};
    }));
    // A window manager that was quicker takes the place only now.
    connections_.push_back(connect<void(GtkWidget*)>(window_, "map", [this](GtkWidget*) {
        if (position_) moveWindow(GTK_WINDOW(window_), *position_);
    }));
    connections_.push_back(connect<void(GtkWidget*)>(window_, "hide", [this](GtkWidget*) {
        if (onClosed) onClosed();
    }));
}

SettingsView::~SettingsView() {
    connections_.clear();
    gtk_window_destroy(GTK_WINDOW(window_));
}

void SettingsView::addKeys() {
    GtkWidget* const window = GTK_WIDGET(window_);
    addShortcut(window, "<Control>w|Escape", [this] { gtk_window_close(GTK_WINDOW(window_)); });
    addShortcut(window, "<Control>Page_Down", [this] { step(1); });
    addShortcut(window, "<Control>Page_Up", [this] { step(-1); });
    for (std::size_t index = 0; index < pageNames.size(); ++index) {
        addShortcut(window, ("<Alt>" + std::to_string(index + 1)).c_str(),
                    [this, index] { select(static_cast<SettingsPage>(index)); });
    }
}

void SettingsView::select(SettingsPage page) {
    const std::array pages{server_->widget(), general_->widget(), notifications_->widget(), account_->widget(),
                           diagnostics_->widget()};
    AdwPreferencesPage* const shown = pages.at(static_cast<std::size_t>(page));
    adw_preferences_window_set_visible_page(window_, shown);
    GtkWidget* const focus = gtk_window_get_focus(GTK_WINDOW(window_));
    const bool isThere = focus && gtk_widget_is_ancestor(focus, GTK_WIDGET(shown));
    if (!isThere) gtk_widget_child_focus(GTK_WIDGET(shown), GTK_DIR_TAB_FORWARD);
}

void SettingsView::step(int pages) {
    const std::string_view shown(adw_preferences_window_get_visible_page_name(window_));
    const auto count = static_cast<int>(pageNames.size());
    for (int index = 0; index < count; ++index) {
        if (shown != pageNames.at(static_cast<std::size_t>(index))) continue;
        select(static_cast<SettingsPage>((index + pages + count) % count));
        return;
    }
}

void SettingsView::show(std::optional<SettingsPage> page) {
    if (!gtk_widget_get_mapped(GTK_WIDGET(window_))) place();
    gtk_window_present(GTK_WINDOW(window_));
    if (page || !std::exchange(wasShown_, true)) select(page.value_or(SettingsPage::server));
}

/// Window managers put a window that comes back wherever they like, and a new one often into a corner.
void SettingsView::place() {
    if (!position_) {
        const auto areas = monitorAreas(gtk_widget_get_display(GTK_WIDGET(window_)));
        if (areas.empty()) return;
        const WindowFrame& area = areas.front();
        const int height = std::min(defaultHeight, static_cast<int>(area.height) - roomForTitleBars);
        gtk_window_set_default_size(GTK_WINDOW(window_), defaultWidth, height);
        position_ = WindowPosition{area.x + std::max(0.0, (area.width - defaultWidth) / 2),
                                   area.y + std::max(0.0, (area.height - height) / 2)};
    }
    moveWindow(GTK_WINDOW(window_), *position_);
}

bool SettingsView::isVisible() const {
    return gtk_widget_get_visible(GTK_WIDGET(window_)) != FALSE;
}

bool SettingsView::isActive() const {
    return gtk_window_is_active(GTK_WINDOW(window_)) != FALSE;
}

void SettingsView::refresh() {
    server_->refresh();
    general_->refresh();
    notifications_->refresh();
    account_->refresh();
}

void SettingsView::showToast(const std::string& text) {
    AdwToast* const toast = adw_toast_new("");
    // Toasts read markup, and what they say may come from anywhere.
    const CharPtr escaped(g_markup_escape_text(text.c_str(), -1));
    adw_toast_set_title(toast, escaped.get());
    adw_preferences_window_add_toast(window_, toast);
}

}  // namespace parvela
