#include "Update/UpdateDialog.h"

#include <memory>
#include <string_view>
#include <utility>

#include <adwaita.h>
#include <fmt/format.h>

namespace parvela {

namespace {

constexpr int notesHeight = 220;
constexpr int notesWidth = 420;
constexpr int notesMargin = 12;

/// The notes as text that can be read, scrolled and copied with the keyboard.
GtkWidget* newNotes(const std::string& notes) {
    GtkWidget* const text = gtk_text_view_new();
    GtkTextView* const view = GTK_TEXT_VIEW(text);
    gtk_text_buffer_set_text(gtk_text_view_get_buffer(view), notes.c_str(), -1);
    gtk_text_view_set_editable(view, FALSE);
    gtk_text_view_set_cursor_visible(view, FALSE);
    gtk_text_view_set_accepts_tab(view, FALSE);
    gtk_text_view_set_wrap_mode(view, GTK_WRAP_WORD_CHAR);
    gtk_text_view_set_left_margin(view, notesMargin);
    gtk_text_view_set_right_margin(view, notesMargin);
    gtk_text_view_set_top_margin(view, notesMargin);
    gtk_text_view_set_bottom_margin(view, notesMargin);
    gtk_accessible_update_property(GTK_ACCESSIBLE(text), GTK_ACCESSIBLE_PROPERTY_LABEL, "What is new", -1);

    GtkWidget* const scroller = gtk_scrolled_window_new();
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), text);
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
    gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scroller), TRUE);
    gtk_scrolled_window_set_max_content_height(GTK_SCROLLED_WINDOW(scroller), notesHeight);
    gtk_scrolled_window_set_min_content_width(GTK_SCROLLED_WINDOW(scroller), notesWidth);
    gtk_widget_add_css_class(scroller, "card");
    gtk_widget_set_overflow(scroller, GTK_OVERFLOW_HIDDEN);
    return scroller;
}

UpdateChoice choiceOf(std::string_view response) {
    if (response == "download") return UpdateChoice::download;
    return response == "skip" ? UpdateChoice::skip : UpdateChoice::later;
}

}  // namespace

GtkWindow* newUpdateOffer(GtkWindow* parent, const appcast::Offer& offer, const AppVersion& current,
                          std::function<void(UpdateChoice)> chosen) {
    GtkWidget* const shown = adw_message_dialog_new(
        parent, fmt::format("Parvela {} is available", offer.version.text()).c_str(),
        fmt::format("You have version {}. The download page opens in your browser.", current.text()).c_str());
    AdwMessageDialog* const dialog = ADW_MESSAGE_DIALOG(shown);
    if (!offer.notes.empty()) adw_message_dialog_set_extra_child(dialog, newNotes(offer.notes));
    adw_message_dialog_add_responses(dialog, "skip", "Skip This Version", "later", "Not Now", "download",
                                     "Open Download Page", nullptr);
    adw_message_dialog_set_response_appearance(dialog, "download", ADW_RESPONSE_SUGGESTED);
    adw_message_dialog_set_default_response(dialog, "download");
    adw_message_dialog_set_close_response(dialog, "later");
    using Chosen = std::function<void(UpdateChoice)>;
    g_signal_connect_data(
        shown, "response", reinterpret_cast<GCallback>(+[](AdwMessageDialog*, const char* response, Chosen* handler) {
            (*handler)(choiceOf(response));
        }),
        new Chosen(std::move(chosen)), [](gpointer handler, GClosure*) { delete static_cast<Chosen*>(handler); },
        GConnectFlags{});
    return GTK_WINDOW(shown);
}

GtkWindow* newUpdateAnswer(GtkWindow* parent, const std::string& heading, const std::string& body) {
    GtkWidget* const shown = adw_message_dialog_new(parent, heading.c_str(), body.c_str());
    adw_message_dialog_add_response(ADW_MESSAGE_DIALOG(shown), "ok", "OK");
    adw_message_dialog_set_default_response(ADW_MESSAGE_DIALOG(shown), "ok");
    return GTK_WINDOW(shown);
}

}  // namespace parvela
