#pragma once

#include <optional>
#include <string>

#include <gtk/gtk.h>

namespace parvela {

/// Lets windows come to the front for what the user did outside of them: a click on a notification, a tray, a dock.
/// Desktops otherwise keep windows from taking the focus by themselves.
class WindowActivation {
public:
    /// The next window presented, within some seconds, is what the user wants to see. `token` is the desktop's
    /// permission: a startup id or an xdg-activation token.
    void expect(std::optional<std::string> token);

    /// Shows the window and brings it to the front.
    void present(GtkWindow* window);

private:
    struct Request {
        std::optional<std::string> token;
        gint64 at;  ///< monotonic time
    };
    std::optional<Request> request_;
};

}  // namespace parvela
