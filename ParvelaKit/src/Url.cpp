#include <ParvelaKit/Text.h>
#include <ParvelaKit/Url.h>

#include <algorithm>
#include <memory>

#include <glib.h>

namespace parvela {

namespace {

struct GFree {
    void operator()(char* text) const { g_free(text); }
};
using GString = std::unique_ptr<char, GFree>;

bool isHexDigit(char c) {
    return g_ascii_isxdigit(c) != 0;
}

/// The unreserved and reserved characters of RFC 3986.
bool isUrlCharacter(char c) {
    constexpr std::string_view marks = "-._~:/?#[]@!$&'()*+,;=";
    return g_ascii_isalnum(c) || marks.find(c) != std::string_view::npos;
}

bool isEscapeAt(std::string_view text, std::size_t i) {
    return text[i] == '%' && i + 2 < text.size() && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2]);
}

bool hasOnlyUrlCharacters(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isUrlCharacter(text[i]) && !isEscapeAt(text, i)) return false;
    }
    return true;
}

std::string escaped(char c) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    return {'%', digits[byte >> 4U], digits[byte & 15U]};
}

bool isKept(char c, UrlCharacters kept) {
    if (g_ascii_isalnum(c)) return true;
    switch (kept) {
        case UrlCharacters::alphanumerics:
            return false;
        case UrlCharacters::path:
            return std::string_view("-._~!$&'()*+,=:@/").contains(c);
        case UrlCharacters::pathSegment:
            return std::string_view("-._~!$&'()*+,=:@").contains(c);
        case UrlCharacters::queryItem:
            return std::string_view("-._~!$'()*,:@/?").contains(c);
    }
    return false;
}

/// What a decoded host must not hold, or its text would mean another one.
bool isNoHostCharacter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= ' ' || byte == 0x7F || std::string_view("%/:?#[]@\\").contains(c);
}

bool authorityHasBrackets(std::string_view text) {
    text.remove_prefix(std::min(text.size(), text.find("//") + 2));
    text = text.substr(0, text.find_first_of("/?#"));
    const auto userInfo = text.rfind('@');
    if (userInfo != std::string_view::npos) text.remove_prefix(userInfo + 1);
    return text.starts_with('[');
}

}  // namespace

std::optional<Url> Url::parse(std::string_view text) {
    if (!hasOnlyUrlCharacters(text)) return std::nullopt;

    const std::string terminated(text);
    char *scheme = nullptr, *userInfo = nullptr, *host = nullptr, *path = nullptr, *query = nullptr,
         *fragment = nullptr;
    int port = -1;
    if (!g_uri_split(terminated.c_str(), G_URI_FLAGS_ENCODED, &scheme, &userInfo, &host, &port, &path, &query,
                     &fragment, nullptr)) {
        return std::nullopt;
    }
    const GString ownedScheme(scheme), ownedUserInfo(userInfo), ownedHost(host), ownedPath(path), ownedQuery(query),
        ownedFragment(fragment);
    const auto optional = [](const char* part) { return part ? std::optional<std::string>(part) : std::nullopt; };

    Url url;
    url.text_ = terminated;
    // GLib lower-cases the scheme; callers may need it as written.
    if (scheme) url.scheme_ = terminated.substr(0, std::string_view(scheme).size());
    url.userInfo_ = optional(userInfo);
    url.path_ = path ? path : "";
    url.query_ = optional(query);
    url.fragment_ = optional(fragment);
    if (port >= 0) url.port_ = static_cast<std::uint16_t>(port);
    if (host) {
        // GLib has decoded it, and taken the brackets from an IPv6 address.
        const std::string_view shown(host);
        url.bracketedHost_ = authorityHasBrackets(text);
        if (!url.bracketedHost_ && std::ranges::any_of(shown, isNoHostCharacter)) return std::nullopt;
        url.host_ = shown;
    }
    return url;
}

std::optional<Url> Url::parseFromEngine(std::string_view text) {
    std::string strict;
    strict.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isUrlCharacter(text[i]) || isEscapeAt(text, i)) {
            strict += text[i];
        } else {
            strict += escaped(text[i]);
        }
    }
    return parse(strict);
}

std::string Url::lowercaseScheme() const {
    return asciiLowercased(scheme_);
}

std::string Url::lowercaseHost() const {
    return host_ ? lowercased(*host_) : std::string();
}

std::optional<std::string> Url::decodedPath() const {
    return percentDecode(path_);
}

std::optional<Url> Url::compose(const Url& parts) {
    std::string text;
    if (!parts.scheme_.empty()) text += parts.scheme_ + ":";
    if (parts.host_) {
        text += "//";
        if (parts.userInfo_) text += *parts.userInfo_ + "@";
        text += parts.bracketedHost_ ? "[" + percentEncode(*parts.host_, UrlCharacters::pathSegment) + "]"
                                     : percentEncode(*parts.host_, UrlCharacters::pathSegment);
        if (parts.port_) text += ":" + std::to_string(*parts.port_);
    }
    text += parts.path_;
    if (parts.query_) text += "?" + *parts.query_;
    if (parts.fragment_) text += "#" + *parts.fragment_;
    return parse(text);
}

std::optional<Url> Url::withPath(std::string_view path) const {
    Url parts = *this;
    parts.path_ = path;
    return compose(parts);
}

std::optional<Url> Url::withQuery(std::optional<std::string_view> query) const {
    Url parts = *this;
    parts.query_ = query ? std::optional<std::string>(*query) : std::nullopt;
    return compose(parts);
}

std::optional<Url> Url::withoutFragment() const {
    Url parts = *this;
    parts.fragment_.reset();
    return compose(parts);
}

std::optional<Url> Url::resolving(std::string_view reference) const {
    if (!parse(reference)) return std::nullopt;
    const GString resolved(
        g_uri_resolve_relative(text_.c_str(), std::string(reference).c_str(), G_URI_FLAGS_ENCODED, nullptr));
    return resolved ? parse(resolved.get()) : std::nullopt;
}

std::string percentEncode(std::string_view text, UrlCharacters kept) {
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        if (isKept(c, kept)) {
            encoded += c;
        } else {
            encoded += escaped(c);
        }
    }
    return encoded;
}

std::optional<std::string> percentDecode(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2])) return std::nullopt;
        decoded += static_cast<char>(g_ascii_xdigit_value(text[i + 1]) * 16 + g_ascii_xdigit_value(text[i + 2]));
        i += 2;
    }
    if (decoded.contains('\0') || !isValidUtf8(decoded)) return std::nullopt;
    return decoded;
}

std::string encodeQuery(const std::vector<QueryItem>& items) {
    std::string query;
    for (const QueryItem& item : items) {
        if (!query.empty()) query += "&";
        query += percentEncode(item.name, UrlCharacters::queryItem);
        if (item.value) query += "=" + percentEncode(*item.value, UrlCharacters::queryItem);
    }
    return query;
}

std::optional<std::vector<QueryItem>> decodeQuery(std::string_view query) {
    std::vector<QueryItem> items;
    while (!query.empty()) {
        const auto end = query.find('&');
        const std::string_view piece = query.substr(0, end);
        query = end == std::string_view::npos ? std::string_view() : query.substr(end + 1);
        if (piece.empty()) continue;

        const auto equals = piece.find('=');
        auto name = percentDecode(piece.substr(0, equals));
        if (!name) return std::nullopt;
        QueryItem item{std::move(*name), std::nullopt};
        if (equals != std::string_view::npos) {
            item.value = percentDecode(piece.substr(equals + 1));
            if (!item.value) return std::nullopt;
        }
        items.push_back(std::move(item));
    }
    return items;
}

}  // namespace parvela
