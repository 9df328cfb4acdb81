#include "JsonText.h"

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

}  // namespace

std::string write(const nlohmann::json& value) {
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
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
