#include "Settings/ServerPage.h"

#include "Settings/MessageLabel.h"

#include <array>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

using Mode = ServerConfig::Mode;

struct ModeRow {
    Mode mode;
    const char* button;
};
constexpr std::array modes =
    std::to_array<ModeRow>({{Mode::production, "production"}, {Mode::local, "local"}, {Mode::custom, "custom"}});

Tone toneOf(const AddressCheck& check) {
    switch (check.verdict) {
        case AddressCheck::Verdict::invalid:
            return Tone::error;
        case AddressCheck::Verdict::exposed:
            return Tone::warning;
        case AddressCheck::Verdict::empty:
        case AddressCheck::Verdict::usable:
            return Tone::hint;
    }
    return Tone::hint;
}

}  // namespace

std::shared_ptr<ServerPage> ServerPage::create(std::shared_ptr<const SettingsEnvironment> environment) {
    std::shared_ptr<ServerPage> page(new ServerPage(std::move(environment)));
    page->showForm();
    page->showInUse();
    return page;
}

ServerPage::ServerPage(std::shared_ptr<const SettingsEnvironment> environment)
    : environment_(std::move(environment)),
      form_(environment_->preferences()),
      page_(interface_.get<AdwPreferencesPage>("page")),
      appURL_(interface_.get<AdwEntryRow>("appURL")),
      apiURL_(interface_.get<AdwEntryRow>("apiURL")),
      app_{interface_.get<AdwActionRow>("appInUse"), interface_.get<GtkSpinner>("appSpinner"),
           interface_.get<GtkImage>("appState")},
      api_{interface_.get<AdwActionRow>("apiInUse"), interface_.get<GtkSpinner>("apiSpinner"),
           interface_.get<GtkImage>("apiState")} {
    const auto subtitle = [this](const char* row, const ServerConfig& preset) {
        adw_action_row_set_subtitle(interface_.get<AdwActionRow>(row), preset.appURL.text().c_str());
    };
    subtitle("productionRow", ServerConfig::production());
    subtitle("localRow", ServerConfig::local());
    for (const ModeRow& row : modes) connectMode(row.button, row.mode);
    gtk_editable_set_text(GTK_EDITABLE(appURL_), form_.appURL().c_str());
    gtk_editable_set_text(GTK_EDITABLE(apiURL_), form_.apiURL().c_str());
    connectField(appURL_, &ServerForm::setAppURL);
    connectField(apiURL_, &ServerForm::setApiURL);
    connections_.push_back(
        connect<void(GtkButton*)>(interface_.get<GtkButton>("check"), "clicked", [this](GtkButton*) { check(); }));
    connections_.push_back(connect<void(GtkWidget*)>(page_, "map", [this](GtkWidget*) { check(); }));
    subscriptions_.push_back(environment_->model->server.observe([this](const ServerConfig&) {
        showInUse();
        check();
    }));
}

ServerPage::~ServerPage() {
    form_.keepDrafts();
    checking_.request_stop();
}

void ServerPage::connectMode(const char* id, Mode mode) {
    connections_.push_back(connect<void(GtkCheckButton*)>(interface_.get<GtkCheckButton>(id), "toggled",
                                                          [this, mode](GtkCheckButton* button) {
                                                              if (!filling_ && gtk_check_button_get_active(button))
                                                                  chose(mode);
                                                          }));
}

void ServerPage::connectField(AdwEntryRow* row, void (ServerForm::*store)(std::string)) {
    GtkEditable* const field = GTK_EDITABLE(row);
    setAccessibleName(GTK_WIDGET(gtk_editable_get_delegate(field)), row == appURL_ ? "Web app address" : "API address");
    connections_.push_back(connect<void(GtkEditable*)>(field, "changed", [this, store](GtkEditable* changed) {
        (form_.*store)(gtk_editable_get_text(changed));
        showForm();
    }));
    connections_.push_back(connect<void(AdwEntryRow*)>(row, "apply", [this](AdwEntryRow*) { apply(); }));
    connections_.push_back(connect<void(AdwEntryRow*)>(row, "entry-activated", [this](AdwEntryRow*) { apply(); }));
    GtkEventController* const focus = gtk_event_controller_focus_new();
    connections_.push_back(
        connect<void(GtkEventControllerFocus*)>(focus, "leave", [this](GtkEventControllerFocus*) { apply(); }));
    gtk_widget_add_controller(GTK_WIDGET(row), focus);
}

void ServerPage::chose(Mode mode) {
    form_.setMode(mode);
    showForm();
    apply();
    if (mode == Mode::custom && !form_.isUsable()) {
        gtk_widget_grab_focus(GTK_WIDGET(form_.appCheck().isUsable() ? apiURL_ : appURL_));
    }
}

void ServerPage::apply() {
    if (!form_.isChanged()) return;
    if (auto config = form_.apply()) {
        switchServer(environment_->model, std::move(*config)).detach();
        // The model has stored the addresses in the form in which it uses them.
        form_.keepTyped();
    }
    showForm();
    showInUse();
}

Task<void> ServerPage::switchServer(std::shared_ptr<AppModel> model, ServerConfig config) {
    auto switching = model->setServer(std::move(config));
    co_await switching;
    model->refreshAll().detach();
}

void ServerPage::showForm() {
    filling_ = true;
    for (const ModeRow& row : modes) {
        gtk_check_button_set_active(interface_.get<GtkCheckButton>(row.button), row.mode == form_.mode());
    }
    filling_ = false;
    const bool custom = form_.mode() == Mode::custom;
    gtk_widget_set_visible(interface_.get<GtkWidget>("appGroup"), custom);
    gtk_widget_set_visible(interface_.get<GtkWidget>("apiGroup"), custom);
    const auto say = [this](const char* label, AdwEntryRow* row, const AddressCheck& check) {
        showMessage(interface_.get<GtkLabel>(label), GTK_WIDGET(row), check.message, toneOf(check));
    };
    say("appMessage", appURL_, form_.appCheck());
    say("apiMessage", apiURL_, form_.apiCheck());
}

void ServerPage::showInUse() {
    const ServerConfig& server = environment_->model->server.get();
    showState(app_, server.appURL.text(), nullptr);
    showState(api_, server.apiURL.text(), nullptr);

    const Preferences& preferences = environment_->preferences();
    std::string note;
    if (!form_.isUsable()) {
        note = "The custom addresses are not in use yet, because something is missing or wrong above.";
    } else if (preferences.linkedApi(ServerConfig::origin(server.appURL))) {
        note = "The web app named this API site when it linked this Mac.";
    } else if (preferences.appURLOverride() || preferences.apiURLOverride()) {
        note = "An address is set outside of this window, in the settings file, and comes first.";
    }
    showMessage(interface_.get<GtkLabel>("note"), nullptr, note, form_.isUsable() ? Tone::hint : Tone::warning);
}

void ServerPage::refresh() {
    showInUse();
    check();
}

void ServerPage::check() {
    // Looked at again when the page is shown.
    if (!gtk_widget_get_mapped(GTK_WIDGET(page_))) return;
    checking_.request_stop();
    checking_ = {};
    const std::stop_token stop = checking_.get_token();
    const ServerConfig server = environment_->model->server.get();
    for (const Site* const site : {&app_, &api_}) {
        gtk_spinner_start(site->spinner);
        gtk_widget_set_visible(GTK_WIDGET(site->image), FALSE);
    }
    checkSite(weak_from_this(), reachWebApp(environment_->transport, server.appURL, stop), stop, &ServerPage::app_,
              server.appURL.text())
        .detach();
    checkSite(weak_from_this(), reachApi(environment_->transport, server.apiURL, stop), stop, &ServerPage::api_,
              server.apiURL.text())
        .detach();
}

Task<void> ServerPage::checkSite(std::weak_ptr<ServerPage> self, Task<Reachability> answer, std::stop_token stop,
                                 Site ServerPage::* site, std::string address) {
    const Reachability state = co_await answer;
    const auto page = self.lock();
    if (!page || stop.stop_requested()) co_return;
    showState(page.get()->*site, address, &state);
}

void ServerPage::showState(const Site& site, const std::string& address, const Reachability* state) {
    adw_action_row_set_subtitle(site.row, state && !state->message.empty()
                                              ? fmt::format("{}\n{}", address, state->message).c_str()
                                              : address.c_str());
    gtk_spinner_stop(site.spinner);
    gtk_widget_set_visible(GTK_WIDGET(site.image), state != nullptr);
    if (!state) return;
    const bool reached = state->state == Reachability::State::reached;
    gtk_image_set_from_icon_name(site.image, reached ? "emblem-ok-symbolic" : "dialog-warning-symbolic");
    if (reached) {
        gtk_widget_remove_css_class(GTK_WIDGET(site.image), "warning");
    } else {
        gtk_widget_add_css_class(GTK_WIDGET(site.image), "warning");
    }
    setAccessibleName(GTK_WIDGET(site.image), state->message);
}

}  // namespace parvela
