#pragma once

#include <ParvelaKit/Url.h>

#include <optional>

namespace parvela {

/// Sign-in with an outside provider runs in the user's browser, not in a web view: the web app's start page is opened
/// there, and the browser comes back through "parvela://auth-callback" with a one-time code.
struct OAuthHandoff {
    static constexpr std::string_view callbackScheme = "parvela";
    static constexpr std::string_view callbackHost = "auth-callback";

    /// Whether a page at this URL starts such a sign-in.
    static bool isSignInURL(const Url& url);
    /// What to open in the browser instead of `signInURL`.
    static Url startURL(const Url& appURL, const Url& signInURL);

    /// Whether the browser comes back with this URL.
    static bool isCallback(const Url& url);
    /// The page of the web app that turns the callback's code into a session of the web view that loads it. None for
    /// another URL and for a callback without a code.
    static std::optional<Url> completionURL(const Url& appURL, const Url& callback);
};

}  // namespace parvela
