#include "Settings/AccountPage.h"

#include "Settings/MessageLabel.h"

#include <ParvelaKit/ShownTitle.h>
#include <ParvelaKit/Text.h>
#include <ParvelaKit/TokenFormat.h>

#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr const char* developerSettings = "/settings/developers";

constexpr std::size_t longestName = 80;

/// A moment as the user's locale writes date and time.
std::string localText(Instant moment) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch().count();
    const GLibPtr<GDateTime, g_date_time_unref> time(g_date_time_new_from_unix_local(seconds));
    if (!time) return {};
    const CharPtr text(g_date_time_format(time.get(), "%e %B %Y, %R"));
    return text ? std::string(trimmed(text.get())) : std::string();
}

struct LinkText {
    std::string title;
    std::string subtitle;
};

LinkText textOf(const LinkInfo& link) {
    const std::string since = localText(link.linkedAt);
    return {link.userName ? fmt::format("Linked as {}", shownTitle(*link.userName, longestName)) : "Linked",
            link.workspaceName ? fmt::format("{}, since {}", shownTitle(*link.workspaceName, longestName), since)
                               : fmt::format("Since {}", since)};
}

struct Remedy {
    const char* title;
    const char* text;
};

/// None when there is nothing to be done.
std::optional<Remedy> remedyFor(SecretStatus status) {
    switch (status) {
        case SecretStatus::success:
        case SecretStatus::notFound:
            return std::nullopt;
        case SecretStatus::noService:
            return Remedy{"No Keychain on this desktop",
                          "Tokens can't be kept, so quick add and the daily summary can't work. Install and start a "
                          "keyring, such as gnome-keyring or KeePassXC with its secret service."};
        case SecretStatus::locked:
            return Remedy{"The Keychain is locked",
                          "The token in it can't be read until you give the keyring's password."};
        case SecretStatus::failed:
            return Remedy{"The Keychain doesn't answer as it should",
                          "A token in it can't be read. Start your keyring again, or sign out of the desktop and in "
                          "again."};
    }
    return std::nullopt;
}

}  // namespace

std::shared_ptr<AccountPage> AccountPage::create(std::shared_ptr<const SettingsEnvironment> environment) {
    std::shared_ptr<AccountPage> page(new AccountPage(std::move(environment)));
    page->start();
    return page;
}

AccountPage::AccountPage(std::shared_ptr<const SettingsEnvironment> environment)
    : environment_(std::move(environment)),
      page_(interface_.get<AdwPreferencesPage>("page")),
      pasted_(interface_.get<GtkEditable>("pasted")) {
}

void AccountPage::start() {
    setAccessibleName(GTK_WIDGET(gtk_editable_get_delegate(pasted_)), "Paste a token");
    const auto onClick = [this](const char* id, auto action) {
        connections_.push_back(
            connect<void(GtkButton*)>(interface_.get<GtkButton>(id), "clicked", [action](GtkButton*) { action(); }));
    };
    onClick("link", [this] { environment_->requestLink(); });
    onClick("unlink", [this] { askToUnlink(); });
    onClick("openTokens", [this] { environment_->openPage(developerSettings); });
    onClick("keyringCheck", [this] { checkKeyring(); });
    onClick("unlock", [this] { unlock(weak_from_this(), environment_, tokenItem()).detach(); });
    connections_.push_back(connect<void(GtkEditable*)>(pasted_, "changed", [this](GtkEditable*) { showTokenCheck(); }));
    connections_.push_back(connect<void(AdwEntryRow*)>(pasted_, "apply", [this](AdwEntryRow*) { savePasted(); }));
    // Return again on what could not be stored.
    connections_.push_back(
        connect<void(AdwEntryRow*)>(pasted_, "entry-activated", [this](AdwEntryRow*) { savePasted(); }));

    const auto changed = [this](const auto&) { showLink(); };
    const AppModel& model = *environment_->model;
    subscriptions_.push_back(model.hasToken.observe(changed));
    subscriptions_.push_back(model.tokenHint.observe(changed));
    subscriptions_.push_back(model.linkInfo.observe(changed));
    subscriptions_.push_back(model.server.observe(changed));
    subscriptions_.push_back(model.boardsError.observe(changed));
    subscriptions_.push_back(environment_->notifications->linkChanged.observe([this] {
        showLink();
        checkKeyring();
    }));
    showLink();
}

void AccountPage::showRow(const char* id, const std::optional<std::string>& text) {
    gtk_widget_set_visible(interface_.get<GtkWidget>(id), text.has_value());
    adw_action_row_set_subtitle(interface_.get<AdwActionRow>(id), text.value_or("").c_str());
}

void AccountPage::showLink() {
    const AppModel& model = *environment_->model;
    const bool hasToken = model.hasToken.get();
    const auto& link = model.linkInfo.get();
    const bool linked = hasToken && link.has_value();

    auto* const state = interface_.get<AdwPreferencesRow>("state");
    LinkText text{"Not linked", "Quick add, the list of what is due and the daily summary need a link."};
    if (link) {
        text = textOf(*link);
        if (!hasToken) text.title = "Linked, but the token is missing";
    } else if (hasToken) {
        text = {"Uses a personal access token", {}};
    }
    adw_preferences_row_set_title(state, text.title.c_str());
    adw_action_row_set_subtitle(ADW_ACTION_ROW(state), text.subtitle.c_str());
    showRow("site", hasToken ? std::optional(model.server.get().apiURL.text()) : std::nullopt);
    showRow("token", hasToken ? model.tokenHint.get() : std::nullopt);
    gtk_widget_set_visible(interface_.get<GtkWidget>("link"), !linked);
    gtk_widget_set_visible(interface_.get<GtkWidget>("unlink"), hasToken || link);
    gtk_widget_set_sensitive(interface_.get<GtkWidget>("unlink"), !isUnlinking_);

    const auto& error = model.boardsError.get();
    showMessage(interface_.get<GtkLabel>("linkMessage"), nullptr, hasToken ? error.value_or("") : std::string(),
                Tone::error);
}

void AccountPage::showTokenCheck() {
    const std::string typed = TokenFormat::normalize(gtk_editable_get_text(pasted_));
    const bool plausible = typed.empty() || TokenFormat::isValid(typed);
    showMessage(interface_.get<GtkLabel>("pastedMessage"), GTK_WIDGET(pasted_),
                plausible ? std::string() : std::string(TokenFormat::invalidMessage), Tone::error);
}

void AccountPage::savePasted() {
    std::string text = gtk_editable_get_text(pasted_);
    if (!trimmed(text).empty()) save(weak_from_this(), environment_->model, std::move(text)).detach();
}

Task<void> AccountPage::save(std::weak_ptr<AccountPage> self, std::shared_ptr<AppModel> model, std::string text) {
    auto saving = model->savePastedToken(text);
    const auto saved = co_await saving;
    const auto page = self.lock();
    if (!page) co_return;
    if (!saved) {
        // What was pasted stays, to be mended or tried again.
        showMessage(page->interface_.get<GtkLabel>("pastedMessage"), GTK_WIDGET(page->pasted_), message(saved.error()),
                    Tone::error);
        page->checkKeyring();
        co_return;
    }
    if (text == gtk_editable_get_text(page->pasted_)) {
        gtk_editable_set_text(page->pasted_, "");
        // Emptying is a change too, but none to apply.
        adw_entry_row_set_show_apply_button(ADW_ENTRY_ROW(page->pasted_), FALSE);
        adw_entry_row_set_show_apply_button(ADW_ENTRY_ROW(page->pasted_), TRUE);
    }
    page->showToast("The token is saved.");
}

void AccountPage::askToUnlink() {
    GtkRoot* const root = gtk_widget_get_root(GTK_WIDGET(page_));
    GtkWidget* const shown =
        adw_message_dialog_new(GTK_WINDOW(root), "Unlink This Mac?",
                               "The token is revoked and forgotten. Quick add, the list of what is due and the daily "
                               "summary stop until you link again. Lines that wait to be sent stay.");
    AdwMessageDialog* const dialog = ADW_MESSAGE_DIALOG(shown);
    adw_message_dialog_add_responses(dialog, "cancel", "_Cancel", "unlink", "_Unlink", nullptr);
    adw_message_dialog_set_response_appearance(dialog, "unlink", ADW_RESPONSE_DESTRUCTIVE);
    adw_message_dialog_set_default_response(dialog, "cancel");
    adw_message_dialog_set_close_response(dialog, "cancel");
    connections_.push_back(connect<void(AdwMessageDialog*, const char*)>(
        dialog, "response", [this](AdwMessageDialog*, const char* response) {
            if (std::string_view(response) != "unlink" || isUnlinking_) return;
            isUnlinking_ = true;
            showLink();
            unlink(weak_from_this(), environment_->model).detach();
        }));
    gtk_window_present(GTK_WINDOW(shown));
}

Task<void> AccountPage::unlink(std::weak_ptr<AccountPage> self, std::shared_ptr<AppModel> model) {
    auto unlinking = model->unlink();
    const Unlinked outcome = co_await unlinking;
    const auto page = self.lock();
    if (!page) co_return;
    page->isUnlinking_ = false;
    page->showLink();
    page->showToast(std::string(message(outcome)));
}

SecretItem AccountPage::tokenItem() const {
    return {.service = "app.parvela.token",
            .account = TokenStore::accountKey(environment_->model->server.get().apiURL),
            .group = std::nullopt};
}

void AccountPage::checkKeyring() {
    readKeyring(weak_from_this(), environment_->secrets, tokenItem()).detach();
}

/// Asks without prompting. Only how the keyring answers counts.
Task<void> AccountPage::readKeyring(std::weak_ptr<AccountPage> self, std::shared_ptr<SecretStore> secrets,
                                    SecretItem item) {
    auto reading = secrets->read(std::move(item));
    const auto answer = co_await reading;
    if (const auto page = self.lock()) page->showKeyring(answer ? SecretStatus::success : answer.error());
}

void AccountPage::showKeyring(SecretStatus status) {
    const auto remedy = remedyFor(status);
    gtk_widget_set_visible(interface_.get<GtkWidget>("keyringGroup"), remedy.has_value());
    gtk_widget_set_visible(interface_.get<GtkWidget>("unlock"), status == SecretStatus::locked);
    gtk_widget_set_visible(interface_.get<GtkWidget>("keyringCheck"), status != SecretStatus::locked);
    if (!remedy) return;
    auto* const row = interface_.get<AdwActionRow>("keyring");
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), remedy->title);
    adw_action_row_set_subtitle(row, remedy->text);
}

Task<void> AccountPage::unlock(std::weak_ptr<AccountPage> self, std::shared_ptr<const SettingsEnvironment> environment,
                               SecretItem item) {
    auto unlocking = environment->secrets->unlock(std::move(item));
    const SecretStatus status = co_await unlocking;
    if (const auto page = self.lock()) page->showKeyring(status);
    if (status != SecretStatus::success) co_return;
    const auto model = environment->model;
    auto reading = model->reloadCredentials();
    co_await reading;
    environment->notifications->linkChanged.post();
    model->refreshAll().detach();
}

void AccountPage::refresh() {
    showLink();
    checkKeyring();
}

}  // namespace parvela
