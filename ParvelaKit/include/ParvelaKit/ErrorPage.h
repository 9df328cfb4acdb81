#pragma once

#include <ParvelaKit/ServerConfig.h>

#include <string>
#include <string_view>

namespace parvela {

/// What a window shows when its page could not be loaded.
struct ErrorPage {
    enum class Failure {
        unreachable,  ///< offline, no such host, or nobody answers there
        other,
    };

    /// What went wrong, for the page. `description` is the engine's own text; it counts for `other` only.
    static std::string message(Failure failure, std::string_view description, const ServerConfig& server);
    /// The whole document, to be loaded from text. It lets the user move the window with the mouse, by messages of the
    /// bridge.
    static std::string html(std::string_view message, const Url& appURL);
    /// To be run in the page once it is there: makes its button go to the web app. The button's own attribute ends too
    /// early to do so.
    static std::string retryScript(const Url& appURL);
};

}  // namespace parvela
