#pragma once

#include <string>
#include <string_view>

namespace parvela {

/// What an API token looks like: "tk_" followed by ASCII letters, digits, "_" and "-", 4 to 511 characters in all.
struct TokenFormat {
    /// Shown when a pasted text is no token.
    static constexpr std::string_view invalidMessage = "That doesn't look like a Parvela token. It starts with tk_.";

    /// A pasted or received text without white space around it and without a leading "Bearer ". Not checked.
    static std::string normalize(std::string_view text);
    /// Expects a normalised text.
    static bool isValid(std::string_view text);
};

/// What of a token may be shown: its first 5 characters and "…", or "none" for an empty one.
std::string tokenHint(std::string_view token);

}  // namespace parvela
