#include "Support/AccessibleWindows.h"

namespace parvela {

AccessibleWindows::AccessibleWindows()
    : windows_(gtk_window_get_toplevels()), last_(GTK_WINDOW(g_object_new(GTK_TYPE_WINDOW, nullptr))) {
    // Whatever changes about a widget puts it on the accessibility bus; only hiding takes it off again.
    for (const bool focusable : {true, false}) gtk_widget_set_focusable(GTK_WIDGET(last_), focusable);
    changed_ = connect<void(GListModel*, guint, guint, guint)>(
        windows_, "items-changed", [this](GListModel*, guint, guint, guint) { standLastSoon(); });
}

AccessibleWindows::~AccessibleWindows() {
    changed_.disconnect();
    if (soon_ != 0) g_source_remove(soon_);
    gtk_window_destroy(last_);
}

/// Not while others are still told of the change. Calls from the bus have the usual priority, and so come later.
void AccessibleWindows::standLastSoon() {
    if (soon_ != 0) return;
    soon_ = g_idle_add_full(
        G_PRIORITY_HIGH,
        [](gpointer self) -> gboolean {
            static_cast<AccessibleWindows*>(self)->standLast();
            return G_SOURCE_REMOVE;
        },
        this, nullptr);
}

void AccessibleWindows::standLast() {
    guint place = 0;
    const guint count = g_list_model_get_n_items(windows_);
    if (G_IS_LIST_STORE(windows_) && g_list_store_find(G_LIST_STORE(windows_), last_, &place) && place + 1 < count) {
        const auto kept = Ref<GtkWindow>::ref(last_);
        g_list_store_remove(G_LIST_STORE(windows_), place);
        g_list_store_append(G_LIST_STORE(windows_), last_);
    }
    soon_ = 0;  // only now, because this changed the list too
}

}  // namespace parvela
