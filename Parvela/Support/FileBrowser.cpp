#include "Support/FileBrowser.h"

#include <ParvelaKit/GLibPtr.h>

#include <memory>

#include <gio/gio.h>

namespace parvela {

namespace {

void openFolderOf(const std::string& fileURI) {
    const auto file = Ref<GFile>::adopt(g_file_new_for_uri(fileURI.c_str()));
    const auto folder = Ref<GFile>::adopt(g_file_get_parent(file.get()));
    if (!folder) return;
    const CharPtr uri(g_file_get_uri(folder.get()));
    g_app_info_launch_default_for_uri_async(uri.get(), nullptr, nullptr, nullptr, nullptr);
}

void shown(GObject* bus, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<std::string> uri(static_cast<std::string*>(data));
    const VariantPtr answer(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
    if (!answer) openFolderOf(*uri);
}

}  // namespace

void revealInFileBrowser(const std::string& fileURI) {
    g_bus_get(
        G_BUS_TYPE_SESSION, nullptr,
        [](GObject*, GAsyncResult* result, gpointer data) {
            std::unique_ptr<std::string> uri(static_cast<std::string*>(data));
            const auto bus = Ref<GDBusConnection>::adopt(g_bus_get_finish(result, nullptr));
            if (!bus) {
                openFolderOf(*uri);
                return;
            }
            const char* const items[] = {uri->c_str(), nullptr};
            GVariant* const arguments = g_variant_new("(^ass)", items, "");
            g_dbus_connection_call(bus.get(), "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                   "org.freedesktop.FileManager1", "ShowItems", arguments, nullptr,
                                   G_DBUS_CALL_FLAGS_NONE, -1, nullptr, shown, uri.release());
        },
        new std::string(fileURI));
}

}  // namespace parvela
