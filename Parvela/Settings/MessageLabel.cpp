#include "Settings/MessageLabel.h"

namespace parvela {

namespace {

void setClass(GtkWidget* widget, const char* name, bool on) {
    if (on) {
        gtk_widget_add_css_class(widget, name);
    } else {
        gtk_widget_remove_css_class(widget, name);
    }
}

}  // namespace

void showMessage(GtkLabel* label, GtkWidget* control, const std::string& text, Tone tone) {
    gtk_label_set_text(label, text.c_str());
    gtk_widget_set_visible(GTK_WIDGET(label), !text.empty());
    setClass(GTK_WIDGET(label), "dim-label", tone == Tone::hint);
    setClass(GTK_WIDGET(label), "warning", tone == Tone::warning);
    setClass(GTK_WIDGET(label), "error", tone == Tone::error);
    if (!control) return;
    setClass(control, "error", tone == Tone::error && !text.empty());
    gtk_accessible_update_state(GTK_ACCESSIBLE(control), GTK_ACCESSIBLE_STATE_INVALID,
                                tone == Tone::error ? GTK_ACCESSIBLE_INVALID_TRUE : GTK_ACCESSIBLE_INVALID_FALSE, -1);
    gtk_accessible_update_property(GTK_ACCESSIBLE(control), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, text.c_str(), -1);
}

void setAccessibleName(GtkWidget* widget, const std::string& name) {
    // The title of a row around the control would be read before and after the name.
    gtk_accessible_reset_relation(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_RELATION_LABELLED_BY);
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, name.c_str(), -1);
}

void nameButtons(GtkWidget* widget) {
    if (GTK_IS_BUTTON(widget) && gtk_button_get_use_underline(GTK_BUTTON(widget))) {
        std::string name = gtk_button_get_label(GTK_BUTTON(widget));
        std::erase(name, '_');
        setAccessibleName(widget, name);
        return;
    }
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child)) {
        nameButtons(child);
    }
}

}  // namespace parvela
