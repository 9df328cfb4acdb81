#include <ParvelaKit/Text.h>
#include <ParvelaKit/TokenFormat.h>

#include <algorithm>

#include <fmt/format.h>

namespace parvela {

namespace {

bool isTokenCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

}  // namespace

std::string TokenFormat::normalize(std::string_view text) {
    constexpr std::string_view scheme = "bearer ";
    text = trimmed(text);
    if (equalsIgnoringAsciiCase(text.substr(0, scheme.size()), scheme)) {
        text = trimmedBlanks(text.substr(scheme.size()));
    }
    return std::string(text);
}

bool TokenFormat::isValid(std::string_view text) {
    // Only ASCII passes, so bytes are characters.
    return text.size() >= 4 && text.size() <= 511 && text.starts_with("tk_") &&
           std::ranges::all_of(text.substr(3), isTokenCharacter);
}

std::string tokenHint(std::string_view token) {
    return token.empty() ? "none" : fmt::format("{}…", firstCharacters(token, 5));
}

}  // namespace parvela
