// The least a program can do to show a web page: what the application's start-up time is measured against.
//
//   bare-window URL

#include <gtk/gtk.h>
#include <webkit/webkit.h>

namespace {

void activate(GtkApplication* application, gpointer url) {
    GtkWidget* const window = gtk_application_window_new(application);
    GtkWidget* const view = webkit_web_view_new();
    gtk_window_set_default_size(GTK_WINDOW(window), 1280, 820);
    gtk_window_set_child(GTK_WINDOW(window), view);
    webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), static_cast<const char*>(url));
    gtk_window_present(GTK_WINDOW(window));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        g_printerr("usage: bare-window URL\n");
        return 2;
    }
    GtkApplication* const application = gtk_application_new("app.parvela.BareWindow", G_APPLICATION_NON_UNIQUE);
    g_signal_connect(application, "activate", G_CALLBACK(activate), argv[1]);
    const int status = g_application_run(G_APPLICATION(application), 1, argv);
    g_object_unref(application);
    return status;
}
