#include "BuildSettings.h"

#include <ParvelaKit/Preferences.h>
#include <ParvelaKit/ServerConfig.h>
#include <ParvelaKit/Text.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include <fmt/format.h>

namespace parvela {

namespace {

constexpr std::array inAppSchemes = std::to_array<std::string_view>({"about", "blob", "data", "javascript"});
constexpr std::array loopbackHosts = std::to_array<std::string_view>({"localhost", "127.0.0.1", "::1"});
/// A local web app may reach a local API under either name.
constexpr std::array localDevelopmentHosts = std::to_array<std::string_view>({"localhost", "127.0.0.1"});

bool contains(const auto& list, std::string_view value) {
    return std::ranges::any_of(list, [value](std::string_view member) { return member == value; });
}

bool isWebScheme(std::string_view lowercaseScheme) {
    return lowercaseScheme == "http" || lowercaseScheme == "https";
}

ServerConfig preset(ServerConfig::Mode mode, std::string_view appURL, std::string_view apiURL) {
    auto app = ServerConfig::normalize(appURL);
    auto api = ServerConfig::normalize(apiURL);
    if (!app || !api) {
        fmt::print(stderr, "The built-in server addresses {} and {} are not both URLs.\n", appURL, apiURL);
        std::abort();
    }
    return {mode, std::move(*app), std::move(*api)};
}

std::optional<Url> normalized(const std::optional<std::string>& typed) {
    return typed ? ServerConfig::normalize(*typed) : std::nullopt;
}

bool isHexDigit(char c) {
    return std::string_view("0123456789abcdefABCDEF").contains(c);
}

/// Percent-encodes what a URL component may not hold and leaves the escapes that are there alone.
std::string encodedOnce(std::string_view text, UrlCharacters kept) {
    std::string encoded;
    while (!text.empty()) {
        const auto escape = text.find('%');
        encoded += percentEncode(text.substr(0, escape), kept);
        if (escape == std::string_view::npos) break;
        text.remove_prefix(escape);
        if (text.size() >= 3 && isHexDigit(text[1]) && isHexDigit(text[2])) {
            encoded += text.substr(0, 3);
            text.remove_prefix(3);
        } else {
            encoded += "%25";
            text.remove_prefix(1);
        }
    }
    return encoded;
}

/// Like queryItem, but the characters that structure a query stay.
std::string encodedQueryOnce(std::string_view query) {
    std::string encoded;
    while (true) {
        const auto mark = query.find_first_of("&=+;");
        encoded += encodedOnce(query.substr(0, mark), UrlCharacters::queryItem);
        if (mark == std::string_view::npos) return encoded;
        encoded += query[mark];
        query.remove_prefix(mark + 1);
    }
}

/// `encodedPath` below the web app's address.
std::optional<Url> below(const Url& base, std::string_view encodedPath) {
    std::string text = base.text();
    if (text.ends_with('/')) text.pop_back();
    if (!encodedPath.starts_with('/')) text += '/';
    text += encodedPath;
    return Url::parse(text);
}

}  // namespace

const ServerConfig& ServerConfig::production() {
    static const ServerConfig config =
        preset(Mode::production, buildSettings::productionAppURL, buildSettings::productionApiURL);
    return config;
}

const ServerConfig& ServerConfig::local() {
    static const ServerConfig config = preset(Mode::local, "http://localhost:3100", "http://127.0.0.1:3213");
    return config;
}

ServerConfig ServerConfig::current(const Preferences& preferences) {
    const Mode mode = preferences.serverMode();
    ServerConfig config = mode == Mode::local ? local() : production();
    config.mode = mode;
    if (mode == Mode::custom) {
        if (auto app = normalized(preferences.customAppURL())) config.appURL = std::move(*app);
        if (auto api = normalized(preferences.customApiURL())) config.apiURL = std::move(*api);
    }
    if (auto app = normalized(preferences.appURLOverride())) config.appURL = std::move(*app);
    if (auto api = normalized(preferences.apiURLOverride())) config.apiURL = std::move(*api);
    if (auto linked = normalized(preferences.linkedApi(origin(config.appURL)))) config.apiURL = std::move(*linked);
    return config;
}

std::optional<Url> ServerConfig::normalize(std::string_view typed) {
    typed = trimmed(typed);
    if (typed.empty()) return std::nullopt;
    std::string text = typed.contains("://") ? std::string(typed) : fmt::format("https://{}", typed);
    while (text.ends_with('/')) text.pop_back();

    auto url = Url::parse(text);
    if (!url || !isWebScheme(url->lowercaseScheme())) return std::nullopt;
    if (!url->host() || url->host()->empty()) return std::nullopt;
    if (url->query() || url->fragment()) return std::nullopt;
    return url;
}

std::string ServerConfig::origin(const Url& url) {
    const std::string scheme = url.scheme().empty() ? "https" : url.lowercaseScheme();
    std::string origin = fmt::format("{}://{}", scheme, url.lowercaseHost());
    const std::uint16_t defaultPort = scheme == "https" ? 443 : 80;
    if (url.port() && *url.port() != defaultPort) origin += fmt::format(":{}", *url.port());
    return origin;
}

bool ServerConfig::isAppOrigin(const Url& url) const {
    return origin(url) == origin(appURL);
}

bool ServerConfig::isInApp(const Url& url) const {
    const std::string scheme = url.lowercaseScheme();
    if (contains(inAppSchemes, scheme)) return true;
    if (!isWebScheme(scheme) || !url.host()) return false;

    const std::string host = url.lowercaseHost();
    const std::array allowed = {appURL.lowercaseHost(), apiURL.lowercaseHost()};
    if (contains(allowed, host)) return true;
    const bool isLocal =
        std::ranges::any_of(allowed, [](const std::string& name) { return contains(localDevelopmentHosts, name); });
    return isLocal && contains(localDevelopmentHosts, host);
}

bool ServerConfig::allowsToken(const Url& url) {
    const std::string host = url.lowercaseHost();
    if (host.empty()) return false;
    const std::string scheme = url.lowercaseScheme();
    return scheme == "https" || (scheme == "http" && isLoopback(url));
}

bool ServerConfig::isLoopback(const Url& url) {
    return contains(loopbackHosts, url.lowercaseHost());
}

Url ServerConfig::appPage(std::string_view path) const {
    return below(appURL, percentEncode(path, UrlCharacters::path)).value_or(appURL);
}

Url ServerConfig::appPageAt(std::string_view pathAndQuery) const {
    const auto mark = pathAndQuery.find('?');
    std::string reference = encodedOnce(pathAndQuery.substr(0, mark), UrlCharacters::path);
    if (mark != std::string_view::npos) reference += "?" + encodedQueryOnce(pathAndQuery.substr(mark + 1));
    return below(appURL, reference).value_or(appURL);
}

std::string_view rawValue(ServerConfig::Mode mode) {
    switch (mode) {
        case ServerConfig::Mode::production:
            return "production";
        case ServerConfig::Mode::local:
            return "local";
        case ServerConfig::Mode::custom:
            return "custom";
    }
    return "production";
}

std::optional<ServerConfig::Mode> serverModeFrom(std::string_view word) {
    for (const auto mode : {ServerConfig::Mode::production, ServerConfig::Mode::local, ServerConfig::Mode::custom}) {
        if (rawValue(mode) == word) return mode;
    }
    return std::nullopt;
}

}  // namespace parvela
