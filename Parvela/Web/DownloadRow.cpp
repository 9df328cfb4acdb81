#include "Web/DownloadRow.h"

#include <Platform/FileRevealer.h>

#include <utility>

namespace parvela {

namespace {

constexpr guint finishedRowSeconds = 12;
constexpr gint64 pulsePause = 150 * G_TIME_SPAN_MILLISECOND;

void takeOut(GtkWidget* row) {
    GtkWidget* const parent = gtk_widget_get_parent(row);
    if (GTK_IS_BOX(parent)) gtk_box_remove(GTK_BOX(parent), row);
}

}  // namespace

DownloadRow::DownloadRow(GtkBox* rows, const std::string& name, std::function<void()> cancel) {
    GtkWidget* const row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
    row_ = Ref<GtkWidget>::ref(row);
    gtk_widget_add_css_class(row, "download-row");
    gtk_box_append(GTK_BOX(row), gtk_image_new_from_icon_name("folder-download-symbolic"));
    GtkWidget* const label = gtk_label_new(name.c_str());
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_MIDDLE);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    gtk_widget_set_hexpand(label, TRUE);
    gtk_box_append(GTK_BOX(row), label);
    progress_ = gtk_progress_bar_new();
    gtk_widget_set_size_request(progress_, 180, -1);
    gtk_widget_set_valign(progress_, GTK_ALIGN_CENTER);
    gtk_accessible_update_property(GTK_ACCESSIBLE(progress_), GTK_ACCESSIBLE_PROPERTY_LABEL, name.c_str(), -1);
    gtk_box_append(GTK_BOX(row), progress_);
    button_ = gtk_button_new_with_label("Cancel");
    gtk_widget_add_css_class(button_, "flat");
    pressed_ = connect<void(GtkButton*)>(button_, "clicked", [cancel = std::move(cancel)](GtkButton*) { cancel(); });
    gtk_box_append(GTK_BOX(row), button_);
    gtk_box_append(rows, row);
}

DownloadRow::~DownloadRow() {
    if (!finished_) takeOut(row_.get());
}

void DownloadRow::setProgress(std::optional<double> progress) {
    if (progress) {
        gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(progress_), *progress);
        return;
    }
    const gint64 now = g_get_monotonic_time();
    if (now - pulsedAt_ < pulsePause) return;
    pulsedAt_ = now;
    gtk_progress_bar_pulse(GTK_PROGRESS_BAR(progress_));
}

void DownloadRow::finish(const std::filesystem::path& file) {
    finished_ = true;
    gtk_widget_set_visible(progress_, FALSE);
    gtk_button_set_label(GTK_BUTTON(button_), "Show in Folder");
    pressed_.disconnect();
    // From here on the row lives by itself.
    g_signal_connect_data(
        button_, "clicked", G_CALLBACK(+[](GtkButton* button, gpointer path) {
            revealFile(*static_cast<std::filesystem::path*>(path)).detach();
            takeOut(gtk_widget_get_parent(GTK_WIDGET(button)));
        }),
        new std::filesystem::path(file),
        [](gpointer path, GClosure*) { delete static_cast<std::filesystem::path*>(path); }, GConnectFlags{});
    g_timeout_add_seconds_full(
        G_PRIORITY_DEFAULT, finishedRowSeconds,
        [](gpointer row) {
            takeOut(GTK_WIDGET(row));
            return G_SOURCE_REMOVE;
        },
        g_object_ref(row_.get()), g_object_unref);
}

}  // namespace parvela
