#pragma once

#include <string>
#include <vector>

namespace parvela {

/// A dictionary that the desktop's spell checkers have.
struct SpellingDictionary {
    std::string tag;   ///< such as "en_US"
    std::string name;  ///< such as "English (United States)"

    bool operator==(const SpellingDictionary&) const = default;
};

/// The dictionaries that are installed now, by name.
std::vector<SpellingDictionary> spellingDictionaries();

/// What people call a language, in English; the tag itself when it means nothing.
std::string languageName(const std::string& tag);

}  // namespace parvela
