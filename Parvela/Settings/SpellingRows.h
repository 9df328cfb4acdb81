#pragma once

#include "Support/Interface.h"
#include "Web/SpellChecking.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/Preferences.h>
#include <Platform/SpellingDictionaries.h>

#include <functional>
#include <string>
#include <vector>

#include <adwaita.h>

namespace parvela {

/// Whether the text fields of pages are checked, and in which of the languages that have a dictionary.
class SpellingRows {
public:
    /// `interface` holds the rows; `apply` makes a choice hold in all pages.
    SpellingRows(const Interface& interface, Preferences preferences, std::function<void(const SpellChecking&)> apply);
    SpellingRows(const SpellingRows&) = delete;
    SpellingRows& operator=(const SpellingRows&) = delete;

    void refresh();

private:
    void rebuild();
    void choose(const std::string& language, bool chosen);
    void change(const SpellChecking& checking);
    void show(const SpellChecking& checking);

    Preferences preferences_;
    std::function<void(const SpellChecking&)> apply_;
    GtkSwitch* enabled_;
    AdwExpanderRow* list_;
    GtkLabel* message_;
    bool filling_ = false;
    std::vector<SpellingDictionary> dictionaries_;
    std::vector<GtkWidget*> rows_;
    std::vector<GtkCheckButton*> checks_;
    Connection switched_;
    std::vector<Connection> connections_;
};

}  // namespace parvela
