#include "Support/DesktopServices.h"

#include <ParvelaKit/GLibPtr.h>

#include <memory>
#include <utility>

#include <fmt/format.h>
#include <gtk/gtk.h>

namespace parvela {

void DefaultApplications::open(const Url& url) {
    struct Request {
        std::string scheme;
        std::function<void(const std::string&)> onFailure;
    };
    GdkDisplay* const display = gdk_display_get_default();
    const auto context = Ref<GdkAppLaunchContext>::adopt(gdk_display_get_app_launch_context(display));
    g_app_info_launch_default_for_uri_async(
        url.text().c_str(), context.as<GAppLaunchContext>(), nullptr,
        [](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Request> request(static_cast<Request*>(data));
            ErrorPtr error;
            if (g_app_info_launch_default_for_uri_finish(result, error.out()) || !request->onFailure) return;
            request->onFailure(g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED)
                                   ? fmt::format("No application on this computer opens “{}” links.", request->scheme)
                                   : fmt::format("The link could not be opened: {}", error->message));
        },
        new Request{url.lowercaseScheme(), onFailure_});
}

}  // namespace parvela
