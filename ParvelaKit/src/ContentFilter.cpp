#include "JsonText.h"

#include <ParvelaKit/ContentFilter.h>

#include <set>
#include <string_view>

#include <fmt/format.h>

namespace parvela {

namespace {

// WebKit knows a part of regular expressions only: no "|" and no counted repetition. It matches against URLs in
// canonical form, so schemes and hosts are in lower case, and a web URL has a "/" after its host.

constexpr std::string_view anyUserInfo = "([^/?#@]*@)?";
constexpr std::string_view anyPort = "(:[0-9]+)?";
constexpr std::string_view signInPath = "/api/auth/signin/";

std::string literal(std::string_view text) {
    std::string pattern;
    for (const char c : text) {
        if (std::string_view(R"(\^$.|?*+()[]{})").contains(c)) pattern += '\\';
        pattern += c;
    }
    return pattern;
}

std::string hostPattern(std::string_view host) {
    return literal(host.contains(':') ? fmt::format("[{}]", host) : std::string(host));
}

nlohmann::json rule(std::string_view action, std::string_view urlPattern) {
    return {{"action", {{"type", action}}},
            {"trigger",
             {{"url-filter", urlPattern},
              {"url-filter-is-case-sensitive", true},
              {"resource-type", nlohmann::json::array({"document"})},
              {"load-context", nlohmann::json::array({"top-frame"})}}}};
}

/// The URLs of the web app's own origin, up to the path.
std::string appOriginPattern(const Url& appURL) {
    const std::string scheme = appURL.lowercaseScheme();
    const std::uint16_t defaultPort = scheme == "https" ? 443 : 80;
    const std::uint16_t port = appURL.port().value_or(defaultPort);
    const std::string portPattern = port == defaultPort ? fmt::format("(:{})?", port) : fmt::format(":{}", port);
    return fmt::format("^{}://{}{}{}", scheme, anyUserInfo, hostPattern(appURL.lowercaseHost()), portPattern);
}

}  // namespace

std::string contentFilterRules(const ServerConfig& server) {
    std::set<std::string> hosts = {server.appURL.lowercaseHost(), server.apiURL.lowercaseHost()};
    for (const auto name : {"localhost", "127.0.0.1"}) {
        if (server.isInApp(Url::parse(fmt::format("http://{}/", name)).value())) hosts.insert(name);
    }

    auto rules = nlohmann::json::array({rule("block", ".*")});
    for (const auto scheme : {"about", "blob", "data", "javascript"}) {
        rules.push_back(rule("ignore-previous-rules", fmt::format("^{}:", scheme)));
    }
    for (const std::string& host : hosts) {
        const std::string site = fmt::format("^https?://{}{}{}", anyUserInfo, hostPattern(host), anyPort);
        rules.push_back(rule("ignore-previous-rules", site + "/"));
    }
    for (const std::string& host : hosts) {
        const std::string site = fmt::format("^https?://{}{}{}", anyUserInfo, hostPattern(host), anyPort);
        rules.push_back(rule("block", site + literal(signInPath)));
    }
    rules.push_back(rule("ignore-previous-rules", appOriginPattern(server.appURL) + literal(signInPath)));
    return jsonText::write(rules);
}

}  // namespace parvela
