#pragma once

#include <ParvelaKit/Url.h>

#include <optional>
#include <string>
#include <string_view>

namespace parvela {

class Preferences;

/// The pair of addresses that everything else works with: the web app that windows show and the API site that native
/// parts call.
struct ServerConfig {
    enum class Mode { production, local, custom };

    Mode mode = Mode::production;
    Url appURL;
    Url apiURL;

    bool operator==(const ServerConfig&) const = default;

    /// The hosted service, as the build settings name it.
    static const ServerConfig& production();
    /// A service on this machine: the web app on port 3100, the API site on port 3213.
    static const ServerConfig& local();
    /// The configuration in force. A web app that linked this device decides over the API site, whatever the mode.
    static ServerConfig current(const Preferences& preferences);

    /// A typed address as a URL without a trailing "/"; "https" when no scheme was typed. None unless it is an http or
    /// https URL with a host and without query or fragment.
    static std::optional<Url> normalize(std::string_view typed);

    /// Scheme and host in lower case, and the port unless it is the scheme's default. An IPv6 host stands without
    /// brackets.
    static std::string origin(const Url& url);
    bool isAppOrigin(const Url& url) const;

    /// Whether a main window may show the URL itself. Looks at scheme and host only.
    bool isInApp(const Url& url) const;
    /// Whether a credential may be sent there: over TLS, or to this machine.
    static bool allowsToken(const Url& url);
    /// Whether what goes there stays on this machine.
    static bool isLoopback(const Url& url);

    /// The page of the web app at `path`, which is plain text: every character that a path may not hold is
    /// percent-encoded, "%", "?" and "#" included. `appURL` itself when no URL can be formed.
    Url appPage(std::string_view path) const;
    /// The page at a reference such as "/b/1?view=list": the path ends at the first "?". Both parts may hold percent
    /// escapes, which stay as they are. `appURL` itself when no URL can be formed.
    Url appPageAt(std::string_view pathAndQuery) const;
};

/// The word that stands for a mode in the preferences: "production", "local" or "custom".
std::string_view rawValue(ServerConfig::Mode mode);
/// None for any other word.
std::optional<ServerConfig::Mode> serverModeFrom(std::string_view rawValue);

}  // namespace parvela
