#include "Settings/SpellingRows.h"

#include "Settings/MessageLabel.h"

#include <algorithm>
#include <utility>

namespace parvela {

SpellingRows::SpellingRows(const Interface& interface, Preferences preferences,
                           std::function<void(const SpellChecking&)> apply)
    : preferences_(std::move(preferences)),
      apply_(std::move(apply)),
      enabled_(interface.get<GtkSwitch>("spelling")),
      list_(interface.get<AdwExpanderRow>("languages")),
      message_(interface.get<GtkLabel>("spellingMessage")) {
    switched_ = connect<void(GtkSwitch*, GParamSpec*)>(enabled_, "notify::active", [this](GtkSwitch*, GParamSpec*) {
        if (filling_) return;
        auto checking = SpellChecking::from(preferences_);
        checking.enabled = gtk_switch_get_active(enabled_) != FALSE;
        change(checking);
    });
}

void SpellingRows::refresh() {
    auto installed = spellingDictionaries();
    if (installed != dictionaries_ || rows_.empty()) {
        dictionaries_ = std::move(installed);
        rebuild();
    }
    show(SpellChecking::from(preferences_));
}

void SpellingRows::rebuild() {
    connections_.clear();
    for (GtkWidget* const row : rows_) adw_expander_row_remove(list_, row);
    rows_.clear();
    checks_.clear();
    for (const SpellingDictionary& dictionary : dictionaries_) {
        GtkWidget* const row = adw_action_row_new();
        adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
        adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), dictionary.name.c_str());
        GtkWidget* const check = gtk_check_button_new();
        gtk_widget_set_valign(check, GTK_ALIGN_CENTER);
        setAccessibleName(check, dictionary.name);
        adw_action_row_add_prefix(ADW_ACTION_ROW(row), check);
        adw_action_row_set_activatable_widget(ADW_ACTION_ROW(row), check);
        adw_expander_row_add_row(list_, row);
        rows_.push_back(row);
        checks_.push_back(GTK_CHECK_BUTTON(check));
        connections_.push_back(
            connect<void(GtkCheckButton*)>(check, "toggled", [this, tag = dictionary.tag](GtkCheckButton* toggled) {
                if (!filling_) choose(tag, gtk_check_button_get_active(toggled) != FALSE);
            }));
    }
}

void SpellingRows::choose(const std::string& language, bool chosen) {
    auto checking = SpellChecking::from(preferences_);
    std::erase(checking.languages, language);
    if (chosen) checking.languages.push_back(language);
    change(checking);
}

void SpellingRows::change(const SpellChecking& checking) {
    checking.store(preferences_);
    apply_(checking);
    show(checking);
}

void SpellingRows::show(const SpellChecking& checking) {
    filling_ = true;
    gtk_switch_set_active(enabled_, checking.enabled);
    std::string names;
    for (std::size_t index = 0; index < dictionaries_.size(); ++index) {
        const SpellingDictionary& dictionary = dictionaries_[index];
        const bool chosen = std::ranges::find(checking.languages, dictionary.tag) != checking.languages.end();
        gtk_check_button_set_active(checks_[index], chosen);
        if (chosen) names += (names.empty() ? "" : ", ") + dictionary.name;
    }
    filling_ = false;
    adw_expander_row_set_subtitle(list_, names.empty() ? "None" : names.c_str());
    gtk_widget_set_sensitive(GTK_WIDGET(list_), checking.enabled && !dictionaries_.empty());

    std::string message;
    if (checking.enabled && dictionaries_.empty()) {
        message = "No dictionary is installed. Install one, such as the package hunspell-en-us, and come back.";
    } else if (checking.enabled && names.empty()) {
        message = "Nothing is checked until a language is chosen.";
    }
    showMessage(message_, nullptr, message, Tone::warning);
}

}  // namespace parvela
