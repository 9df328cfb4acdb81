#include "Support/WindowActivation.h"

#include "Support/WindowFocus.h"

#include <utility>

namespace parvela {

namespace {

/// A page may have to be asked for first. Desktops let tokens lapse as well.
constexpr gint64 lifetime = 10 * G_TIME_SPAN_SECOND;

}  // namespace

void WindowActivation::expect(std::optional<std::string> token) {
    request_ = Request{std::move(token), g_get_monotonic_time()};
}

void WindowActivation::present(GtkWindow* window) {
    const auto request = std::exchange(request_, std::nullopt);
    if (request && g_get_monotonic_time() - request->at <= lifetime) {
        presentForUser(window, request->token);
    } else {
        gtk_window_present(window);
    }
}

}  // namespace parvela
