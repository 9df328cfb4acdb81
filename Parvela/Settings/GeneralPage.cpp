#include "Settings/GeneralPage.h"

#include "Settings/MessageLabel.h"
#include "Support/InstalledFiles.h"
#include "Support/RendererChoice.h"

#include <ParvelaKit/PageZoom.h>
#include <Platform/Autostart.h>

#include <cmath>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

/// How the desktop starts the program when the user logs in.
Autostart autostart(bool hidden) {
    std::vector<std::string> command = Autostart::command(programFolder() / "parvela-desktop");
    if (hidden) command.emplace_back("--background");
    return {Autostart::userFolder(), PARVELA_APP_ID, "Parvela", std::move(command)};
}

}  // namespace

std::shared_ptr<GeneralPage> GeneralPage::create(std::shared_ptr<const SettingsEnvironment> environment) {
    std::shared_ptr<GeneralPage> page(new GeneralPage(std::move(environment)));
    page->showBoards();
    return page;
}

GeneralPage::GeneralPage(std::shared_ptr<const SettingsEnvironment> environment)
    : environment_(std::move(environment)),
      page_(interface_.get<AdwPreferencesPage>("page")),
      board_(interface_.get<AdwComboRow>("board")),
      atLogin_(interface_.get<GtkSwitch>("atLogin")),
      hidden_(interface_.get<GtkSwitch>("hidden")),
      hotKey_(HotKeyRows::create(interface_, environment_->preferences(), environment_->hotKey)),
      spelling_(interface_, environment_->preferences(), environment_->setSpellChecking),
      permissions_(interface_, environment_->preferences()) {
    connectBoards();
    connectStart();
    connectZoom();
    connectGraphics();
}

void GeneralPage::connectBoards() {
    connections_.push_back(connect<void(AdwComboRow*, GParamSpec*)>(
        board_, "notify::selected", [this](AdwComboRow*, GParamSpec*) { choseBoard(); }));
    const auto changed = [this](const auto&) { showBoards(); };
    const AppModel& model = *environment_->model;
    subscriptions_.push_back(model.boards.observe(changed));
    subscriptions_.push_back(model.defaultBoardID.observe(changed));
    subscriptions_.push_back(model.boardsError.observe(changed));
    subscriptions_.push_back(model.isLoadingBoards.observe(changed));
}

void GeneralPage::showBoards() {
    const AppModel& model = *environment_->model;
    const auto& boards = model.boards.get();
    const auto& chosen = model.defaultBoardID.get();

    filling_ = true;
    const auto names = Ref<GtkStringList>::adopt(gtk_string_list_new(nullptr));
    guint selected = 0;
    for (const Board& board : boards) {
        if (chosen == board.id) selected = g_list_model_get_n_items(names.as<GListModel>());
        gtk_string_list_append(names.get(), board.name.c_str());
    }
    const auto stored = chosen ? environment_->preferences().defaultBoardName() : std::nullopt;
    if (boards.empty()) gtk_string_list_append(names.get(), stored.value_or("No boards").c_str());
    adw_combo_row_set_model(board_, names.as<GListModel>());
    adw_combo_row_set_selected(board_, selected);
    gtk_widget_set_sensitive(GTK_WIDGET(board_), !boards.empty());
    filling_ = false;

    const auto& error = model.boardsError.get();
    const bool loading = model.isLoadingBoards.get() && boards.empty();
    showMessage(interface_.get<GtkLabel>("boardMessage"), nullptr, loading ? "Loading the boards…" : error.value_or(""),
                loading ? Tone::hint : Tone::error);
}

void GeneralPage::choseBoard() {
    const auto& boards = environment_->model->boards.get();
    const guint selected = adw_combo_row_get_selected(board_);
    if (filling_ || selected >= boards.size()) return;
    environment_->model->setDefaultBoard(boards[selected].id);
}

void GeneralPage::connectStart() {
    const auto changed = [this](GtkSwitch*, GParamSpec*) {
        if (!filling_) changeStart(gtk_switch_get_active(atLogin_) != FALSE, gtk_switch_get_active(hidden_) != FALSE);
    };
    connections_.push_back(connect<void(GtkSwitch*, GParamSpec*)>(atLogin_, "notify::active", changed));
    connections_.push_back(connect<void(GtkSwitch*, GParamSpec*)>(hidden_, "notify::active", changed));
    if (environment_->isInTray) {
        subscriptions_.push_back(environment_->isInTray->observe([this](bool) { showTray(); }));
    }
}

void GeneralPage::changeStart(bool atLogin, bool hidden) {
    environment_->preferences().setStartsHidden(hidden);
    const auto error = autostart(hidden).setEnabled(atLogin);
    showStart();
    showMessage(interface_.get<GtkLabel>("startMessage"), nullptr,
                error ? fmt::format("The start at login couldn't be changed: {}. Check the permissions of “{}”.",
                                    error.message(), Autostart::userFolder().string())
                      : std::string(),
                Tone::error);
}

void GeneralPage::showStart() {
    filling_ = true;
    const bool hidden = environment_->preferences().startsHidden();
    const bool atLogin = autostart(hidden).isEnabled();
    gtk_switch_set_active(atLogin_, atLogin);
    gtk_switch_set_active(hidden_, hidden);
    gtk_widget_set_sensitive(interface_.get<GtkWidget>("hiddenRow"), atLogin);
    filling_ = false;
}

void GeneralPage::showTray() {
    const bool missing = environment_->isInTray && !environment_->isInTray->get();
    showMessage(interface_.get<GtkLabel>("trayMessage"), nullptr,
                missing
                    ? "This desktop shows no tray icons, so closing the last window quits Parvela. Add a tray to the "
                      "panel; on GNOME, install the AppIndicator extension."
                    : "",
                Tone::warning);
}

void GeneralPage::connectZoom() {
    const auto onClick = [this](const char* id, auto next) {
        connections_.push_back(connect<void(GtkButton*)>(
            interface_.get<GtkButton>(id), "clicked",
            [this, next](GtkButton*) { changeZoom(next(environment_->preferences().pageZoom())); }));
    };
    onClick("zoomOut", PageZoom::smaller);
    onClick("zoomIn", PageZoom::larger);
    onClick("zoomReset", [](double) { return PageZoom::actualSize; });
}

void GeneralPage::changeZoom(double zoom) {
    environment_->setZoom(zoom);
    showZoom();
}

void GeneralPage::showZoom() {
    const double zoom = environment_->preferences().pageZoom();
    gtk_label_set_text(interface_.get<GtkLabel>("zoomText"), fmt::format("{:.0f}%", std::round(zoom * 100)).c_str());
    gtk_widget_set_sensitive(interface_.get<GtkWidget>("zoomOut"), zoom > PageZoom::minimum);
    gtk_widget_set_sensitive(interface_.get<GtkWidget>("zoomIn"), zoom < PageZoom::maximum);
    gtk_widget_set_sensitive(interface_.get<GtkWidget>("zoomReset"), zoom != PageZoom::actualSize);
}

void GeneralPage::connectGraphics() {
    auto* const graphics = interface_.get<GtkSwitch>("graphics");
    gtk_widget_set_visible(interface_.get<GtkWidget>("graphicsRow"), hasRenderNode());
    gtk_switch_set_active(graphics, !environment_->preferences().safeRenderer());
    connections_.push_back(
        connect<void(GtkSwitch*, GParamSpec*)>(graphics, "notify::active", [this](GtkSwitch* control, GParamSpec*) {
            environment_->preferences().setSafeRenderer(!gtk_switch_get_active(control));
        }));
}

void GeneralPage::refresh() {
    AppModel& model = *environment_->model;
    if (model.hasToken.get() && model.boards.get().empty() && !model.isLoadingBoards.get()) {
        model.refreshBoards().detach();
    }
    showStart();
    showTray();
    showZoom();
    spelling_.refresh();
    permissions_.refresh();
}

}  // namespace parvela
