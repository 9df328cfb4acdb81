#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace parvela {

/// A URL or relative reference as RFC 3986 defines it. Immutable; keeps the text it was made from.
///
/// Parsing is strict: raw blanks, control or non-ASCII characters, broken percent escapes and ports that are no number
/// up to 65535 fail. Components are kept as written (percent escapes included), except that the host is decoded and an
/// IPv6 host loses its brackets.
class Url {
public:
    static std::optional<Url> parse(std::string_view text);
    /// A URL as a browser engine writes it: what RFC 3986 forbids and engines leave as it is (such as "|" in a query)
    /// is percent-encoded first.
    static std::optional<Url> parseFromEngine(std::string_view text);

    const std::string& text() const noexcept { return text_; }
    /// As written, without the colon; empty for a relative reference.
    const std::string& scheme() const noexcept { return scheme_; }
    /// Absent when the URL has no authority, empty when it has one without a host.
    const std::optional<std::string>& host() const noexcept { return host_; }
    /// Absent also for "http://host:/", whose port is empty.
    std::optional<std::uint16_t> port() const noexcept { return port_; }
    const std::optional<std::string>& userInfo() const noexcept { return userInfo_; }
    /// Percent-encoded; may be empty.
    const std::string& path() const noexcept { return path_; }
    const std::optional<std::string>& query() const noexcept { return query_; }
    const std::optional<std::string>& fragment() const noexcept { return fragment_; }

    std::string lowercaseScheme() const;
    /// The host in lower case; empty when there is none.
    std::string lowercaseHost() const;
    /// The path with its escapes decoded; none when they are no valid UTF-8 or hide a NUL.
    std::optional<std::string> decodedPath() const;

    bool operator==(const Url& other) const noexcept { return text_ == other.text_; }

    /// Copies with one component replaced. `path` and `query` must be percent-encoded; none when the result is no URL.
    std::optional<Url> withPath(std::string_view path) const;
    std::optional<Url> withQuery(std::optional<std::string_view> query) const;
    std::optional<Url> withoutFragment() const;

    /// This URL as the base of `reference` (RFC 3986, section 5.2).
    std::optional<Url> resolving(std::string_view reference) const;

private:
    Url() = default;
    static std::optional<Url> compose(const Url& parts);

    std::string text_, scheme_, path_;
    std::optional<std::string> host_, userInfo_, query_, fragment_;
    std::optional<std::uint16_t> port_;
    bool bracketedHost_ = false;
};

/// Which ASCII characters stay as they are when a component is percent-encoded.
enum class UrlCharacters {
    alphanumerics,  ///< ASCII letters and digits only
    path,           ///< what a path may hold, "/" included, ";" not
    pathSegment,    ///< the same without "/"
    queryItem,      ///< what a name or value of a query item may hold: no "&", "=", "+", ";" or "#"
};

std::string percentEncode(std::string_view text, UrlCharacters kept);
/// The decoded bytes; none for a broken escape, invalid UTF-8 or a NUL.
std::optional<std::string> percentDecode(std::string_view text);

/// Name and value pairs of a query in order. "+" stands for itself; an item without "=" has no value.
struct QueryItem {
    std::string name;
    std::optional<std::string> value;
    bool operator==(const QueryItem&) const = default;
};
std::string encodeQuery(const std::vector<QueryItem>& items);
/// None when any name or value has a bad escape.
std::optional<std::vector<QueryItem>> decodeQuery(std::string_view query);

}  // namespace parvela
