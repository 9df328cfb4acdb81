#include "JsonText.h"

#include <algorithm>
#include <cmath>

namespace parvela::jsonText {

namespace {

/// Whether the brackets outside strings nest no deeper than allowed. Malformed text is left to the parser.
bool isShallow(std::string_view text) {
    std::size_t depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\') ++i;
            if (c == '"') inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            if (++depth > maximumDepth) return false;
        } else if ((c == '}' || c == ']') && depth > 0) {
            --depth;
        }
    }
    return true;
}

enum class Surrogate { none, high, low };

/// Whether an escape such as "\\uD83D" stands at the start of `text`.
Surrogate surrogateAt(std::string_view text) {
    constexpr std::string_view hexDigits = "0123456789abcdefABCDEF";
    if (text.size() < 6 || !text.starts_with("\\u") || (text[2] != 'd' && text[2] != 'D')) return Surrogate::none;
    if (text.substr(3, 3).find_first_not_of(hexDigits) != std::string_view::npos) return Surrogate::none;
    if (std::string_view("89abAB").contains(text[3])) return Surrogate::high;
    return std::string_view("cdefCDEF").contains(text[3]) ? Surrogate::low : Surrogate::none;
}

}  // namespace

std::string withoutUnpairedSurrogates(std::string_view text) {
    std::string clean;
    clean.reserve(text.size());
    while (!text.empty()) {
        const auto escape = text.find('\\');
        clean += text.substr(0, escape);
        if (escape == std::string_view::npos) break;
        text.remove_prefix(escape);

        const Surrogate kind = surrogateAt(text);
        std::size_t length = kind == Surrogate::none ? 2 : 6;
        if (kind == Surrogate::high && surrogateAt(text.substr(6)) == Surrogate::low) length = 12;
        clean += length == 6 ? "\\ufffd" : text.substr(0, length);
        text.remove_prefix(std::min(length, text.size()));
    }
    return clean;
}

std::optional<nlohmann::json> read(std::string_view text) {
    if (!isShallow(text)) return std::nullopt;
    auto value = nlohmann::json::parse(text, nullptr, false);
    return value.is_discarded() ? std::nullopt : std::optional(std::move(value));
}

std::optional<std::string> string(const nlohmann::json& object, std::string_view name) {
    const auto entry = object.find(name);
    if (entry == object.end() || !entry->is_string()) return std::nullopt;
    return entry->get<std::string>();
}

std::optional<Instant> instant(const nlohmann::json& object, std::string_view name) {
    const auto entry = object.find(name);
    if (entry == object.end() || !entry->is_number()) return std::nullopt;
    return instantFrom(entry->get<double>());
}

std::optional<Instant> instantFrom(double milliseconds) {
    constexpr double limit = 8.64e15;  // the range of dates in ECMAScript, 100 million days either way
    if (!std::isfinite(milliseconds) || std::abs(milliseconds) > limit) return std::nullopt;
    return Instant(std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds)));
}

}  // namespace parvela::jsonText
