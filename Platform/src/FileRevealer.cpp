#include "AsyncCall.h"

#include <Platform/DBus.h>
#include <Platform/FileRevealer.h>

#include <utility>

namespace parvela {

namespace {

const dbus::Address manager{"org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                            "org.freedesktop.FileManager1"};

std::string uriOf(const std::filesystem::path& file) {
    const CharPtr uri(g_filename_to_uri(file.c_str(), nullptr, nullptr));
    return uri ? uri.get() : "";
}

}  // namespace

Task<bool> revealFile(std::filesystem::path file, std::string activationToken) {
    const std::string uri = uriOf(file);
    if (uri.empty()) co_return false;
    auto connecting = dbus::connect(G_BUS_TYPE_SESSION);
    const auto bus = co_await connecting;
    std::error_code ignored;
    if (bus && std::filesystem::exists(file, ignored)) {
        const char* const uris[] = {uri.c_str(), nullptr};
        auto showing = dbus::call(bus, manager, "ShowItems", g_variant_new("(^ass)", uris, activationToken.c_str()));
        const VariantPtr shown = co_await showing;
        if (shown) co_return true;
    }
    const std::string folder = uriOf(file.parent_path());
    const auto waiting = startAsync([&folder](GAsyncReadyCallback done, gpointer data) {
        g_app_info_launch_default_for_uri_async(folder.c_str(), nullptr, nullptr, done, data);
    });
    const auto result = co_await waiting;
    co_return g_app_info_launch_default_for_uri_finish(result.get(), nullptr) != FALSE;
}

}  // namespace parvela
