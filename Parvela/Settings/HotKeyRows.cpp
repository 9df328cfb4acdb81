#include "Settings/HotKeyRows.h"

#include "Settings/MessageLabel.h"

#include <utility>

namespace parvela {

namespace {

constexpr const char* command = "parvela quick-add";
constexpr const char* refusedText = "That shortcut is already used by another app. Pick a different one.";

void store(const Preferences& preferences, HotKey key) {
    preferences.setHotKeyCode(key.keyCode);
    preferences.setHotKeyModifiers(key.modifiers);
}

}  // namespace

std::shared_ptr<HotKeyRows> HotKeyRows::create(const Interface& interface, Preferences preferences,
                                               std::shared_ptr<QuickAddHotKey> hotKey) {
    std::shared_ptr<HotKeyRows> rows(new HotKeyRows(interface, std::move(preferences), std::move(hotKey)));
    rows->start();
    return rows;
}

HotKeyRows::HotKeyRows(const Interface& interface, Preferences preferences, std::shared_ptr<QuickAddHotKey> hotKey)
    : preferences_(std::move(preferences)),
      hotKey_(std::move(hotKey)),
      enabled_(interface.get<GtkSwitch>("hotKey")),
      shortcut_(interface.get<AdwActionRow>("shortcutRow")),
      message_(interface.get<GtkLabel>("hotKeyMessage")),
      commandRow_(interface.get<GtkWidget>("commandRow")),
      copy_(interface.get<GtkButton>("copyCommand")),
      recorder_(hotKey_->center, hotKey_->key()) {
    gtk_widget_set_valign(recorder_.widget(), GTK_ALIGN_CENTER);
    adw_action_row_add_suffix(shortcut_, recorder_.widget());
    adw_action_row_set_activatable_widget(shortcut_, recorder_.widget());
    // The recorder names itself.
    gtk_accessible_reset_relation(GTK_ACCESSIBLE(recorder_.widget()), GTK_ACCESSIBLE_RELATION_LABELLED_BY);
}

void HotKeyRows::start() {
    recorder_.onChange = [this](HotKey key) { recorded(key); };
    connections_.push_back(
        connect<void(GtkSwitch*, GParamSpec*)>(enabled_, "notify::active", [this](GtkSwitch*, GParamSpec*) {
            if (!filling_) switched();
        }));
    connections_.push_back(connect<void(GtkButton*)>(copy_, "clicked", [this](GtkButton*) { copyCommand(); }));
    subscriptions_.push_back(hotKey_->state.observe([this](const auto&) { show(); }));
    subscriptions_.push_back(hotKey_->center->availability().observe([this](const auto&) { show(); }));
    show();
}

void HotKeyRows::switched() {
    wasRefused_ = false;
    preferences_.setHotKeyEnabled(gtk_switch_get_active(enabled_) != FALSE);
    apply(weak_from_this(), hotKey_, std::nullopt).detach();
}

void HotKeyRows::recorded(HotKey key) {
    wasRefused_ = false;
    const HotKey earlier = hotKey_->key();
    store(preferences_, key);
    apply(weak_from_this(), hotKey_, earlier).detach();
}

Task<void> HotKeyRows::apply(std::weak_ptr<HotKeyRows> self, std::shared_ptr<QuickAddHotKey> hotKey,
                             std::optional<HotKey> earlier) {
    const HotKey wanted = hotKey->key();
    auto applying = hotKey->apply();
    co_await applying;
    const auto rows = self.lock();
    if (!rows || hotKey->state.get() != QuickAddHotKey::State::refused || hotKey->key() != wanted) co_return;
    rows->wasRefused_ = true;
    if (earlier && *earlier != wanted) {
        store(rows->preferences_, *earlier);
        rows->recorder_.setKey(*earlier);
        hotKey->apply().detach();
    }
    rows->show();
}

void HotKeyRows::show() {
    const auto availability = hotKey_->center->availability().get();
    const auto state = hotKey_->state.get();
    const bool possible = availability != HotKeyAvailability::none;
    filling_ = true;
    gtk_switch_set_active(enabled_, preferences_.hotKeyEnabled());
    filling_ = false;
    gtk_widget_set_sensitive(gtk_widget_get_parent(GTK_WIDGET(enabled_)), possible);
    gtk_widget_set_sensitive(GTK_WIDGET(shortcut_), possible && preferences_.hotKeyEnabled());

    const bool refused = wasRefused_ || state == QuickAddHotKey::State::refused;
    gtk_widget_set_visible(commandRow_, !possible || refused);
    if (!possible) {
        showMessage(message_, nullptr,
                    "This desktop lets no program have such a shortcut. Give the command one in its keyboard settings.",
                    Tone::hint);
    } else if (refused) {
        showMessage(message_, nullptr, refusedText, Tone::error);
    } else if (state == QuickAddHotKey::State::waiting && availability == HotKeyAvailability::portal) {
        showMessage(message_, nullptr, "Waiting for the desktop's permission…", Tone::hint);
    } else {
        showMessage(message_, nullptr, {}, Tone::hint);
    }
}

void HotKeyRows::copyCommand() {
    gdk_clipboard_set_text(gtk_widget_get_clipboard(GTK_WIDGET(copy_)), command);
    gtk_button_set_label(copy_, "Copied");
}

}  // namespace parvela
