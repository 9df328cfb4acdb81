#pragma once

#include <string>

#include <gtk/gtk.h>

namespace parvela {

enum class Tone { hint, warning, error };

/// A sentence under a control, shown while there is something to say. `control` may be none.
void showMessage(GtkLabel* label, GtkWidget* control, const std::string& text, Tone tone);

/// The name by which a screen reader calls a control.
void setAccessibleName(GtkWidget* widget, const std::string& name);

/// Names the buttons inside `widget` after their labels; GTK 4.8 would read the mnemonic's underline out.
void nameButtons(GtkWidget* widget);

}  // namespace parvela
