#pragma once

#include <ParvelaKit/Preferences.h>

#include <string>
#include <vector>

namespace parvela {

/// How the text fields of pages are checked.
struct SpellChecking {
    bool enabled = true;
    /// Tags such as "en_US", in the order of preference.
    std::vector<std::string> languages;

    bool operator==(const SpellChecking&) const = default;

    /// What the user chose, else the languages of the session.
    static SpellChecking from(const Preferences& preferences);
    void store(const Preferences& preferences) const;

    /// The languages of the session, American English when it names none.
    static std::vector<std::string> sessionLanguages();
};

}  // namespace parvela
