#pragma once

#include <ParvelaKit/Clock.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

/// Small JSON documents as text, without exceptions: for records that the kit keeps or exchanges by itself. The answers
/// of the service have their own decoder.
namespace parvela::jsonText {

inline constexpr std::size_t maximumDepth = 64;

/// No white space; invalid UTF-8 becomes U+FFFD.
template <class Json>
std::string write(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}
/// None when `text` is no JSON, or is nested more than `maximumDepth` deep.
std::optional<nlohmann::json> read(std::string_view text);

/// JSON text with U+FFFD for each escape of half a UTF-16 surrogate pair. A page that cuts a string between the halves
/// sends such text, and parsers refuse it whole.
std::string withoutUnpairedSurrogates(std::string_view text);

/// The entry of that name when it is a string, else none.
std::optional<std::string> string(const nlohmann::json& object, std::string_view name);
/// The entry of that name in milliseconds since 1970-01-01 UTC when it is a number that fits, else none.
std::optional<Instant> instant(const nlohmann::json& object, std::string_view name);
/// `milliseconds` as an Instant, without the fraction; none when it is not finite or does not fit.
std::optional<Instant> instantFrom(double milliseconds);

}  // namespace parvela::jsonText
