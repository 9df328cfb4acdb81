#include "Web/SpellChecking.h"

#include <sstream>

#include <glib.h>

namespace parvela {

std::vector<std::string> SpellChecking::sessionLanguages() {
    std::vector<std::string> languages;
    for (const char* const* name = g_get_language_names(); *name; ++name) {
        const std::string_view language(*name);
        const bool named = language.size() == 5 && language[2] == '_';
        if (named) languages.emplace_back(language);
    }
    if (languages.empty()) languages.emplace_back("en_US");
    return languages;
}

SpellChecking SpellChecking::from(const Preferences& preferences) {
    SpellChecking result{.enabled = preferences.spellCheckingEnabled(), .languages = {}};
    const auto chosen = preferences.spellCheckingLanguages();
    if (!chosen) {
        result.languages = sessionLanguages();
        return result;
    }
    std::istringstream words(*chosen);
    for (std::string word; words >> word;) result.languages.push_back(word);
    return result;
}

void SpellChecking::store(const Preferences& preferences) const {
    preferences.setSpellCheckingEnabled(enabled);
    std::string words;
    for (const std::string& language : languages) words += (words.empty() ? "" : " ") + language;
    preferences.setSpellCheckingLanguages(languages == sessionLanguages() ? std::nullopt : std::optional(words));
}

}  // namespace parvela
