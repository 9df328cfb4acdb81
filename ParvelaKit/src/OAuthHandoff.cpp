#include <ParvelaKit/OAuthHandoff.h>

#include <algorithm>

#include <fmt/format.h>

namespace parvela {

namespace {

Url pageWith(const Url& appURL, std::string_view path, std::string_view name, std::string_view value) {
    const auto page = appURL.withPath(path);
    const auto query = fmt::format("{}={}", name, percentEncode(value, UrlCharacters::alphanumerics));
    const auto complete = page ? page->withQuery(query) : std::nullopt;
    return complete.value_or(appURL);
}

}  // namespace

bool OAuthHandoff::isSignInURL(const Url& url) {
    const auto path = url.decodedPath();
    return path && path->starts_with("/api/auth/signin/");
}

Url OAuthHandoff::startURL(const Url& appURL, const Url& signInURL) {
    return pageWith(appURL, "/oauth/start", "u", signInURL.text());
}

bool OAuthHandoff::isCallback(const Url& url) {
    return url.lowercaseScheme() == callbackScheme && url.lowercaseHost() == callbackHost;
}

std::optional<Url> OAuthHandoff::completionURL(const Url& appURL, const Url& callback) {
    if (!isCallback(callback)) return std::nullopt;
    const auto items = decodeQuery(callback.query().value_or(""));
    if (!items) return std::nullopt;
    const auto code = std::ranges::find_if(
        *items, [](const QueryItem& item) { return item.name == "code" && item.value && !item.value->empty(); });
    if (code == items->end()) return std::nullopt;
    return pageWith(appURL, "/oauth/complete", "code", *code->value);
}

}  // namespace parvela
