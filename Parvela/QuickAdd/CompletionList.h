#pragma once

#include "Support/Interface.h"

#include <ParvelaKit/GLibPtr.h>
#include <ParvelaKit/QuickAddSession.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include <gtk/gtk.h>

namespace parvela {

/// The names on offer, in a list below the field. It never takes the keyboard; a click chooses.
class CompletionList {
public:
    CompletionList(const Interface& interface, GtkWidget* field);
    CompletionList(const CompletionList&) = delete;
    CompletionList& operator=(const CompletionList&) = delete;

    /// An empty list hides it.
    void show(const std::vector<QuickAddCompletion>& completions, std::optional<std::size_t> selected);
    void hide();

    std::function<void(std::size_t)> onChosen;

private:
    void fill(const std::vector<QuickAddCompletion>& completions);
    void standBelowField();

    GtkWidget* field_;
    GtkWidget* frame_;
    GtkListBox* list_;
    std::vector<QuickAddCompletion> shown_;
    std::vector<Connection> connections_;
};

}  // namespace parvela
