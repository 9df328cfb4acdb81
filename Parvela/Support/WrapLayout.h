#pragma once

#include <gtk/gtk.h>

namespace parvela {

/// Lets a box lay its children out like words: side by side at their natural width, in as many rows as they need.
/// `spacing` is between children and between rows, in pixels.
void useWrapLayout(GtkWidget* box, int spacing);

}  // namespace parvela
