#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace parvela {

/// Text is UTF-8 unless it says otherwise. White space, letters and user-perceived characters are Unicode's, by ICU.

bool isValidUtf8(std::string_view text);
/// Invalid sequences become U+FFFD.
std::u16string toUtf16(std::string_view text);
std::string toUtf8(std::u16string_view text);

/// Without white space and line breaks at both ends.
std::string_view trimmed(std::string_view text);
/// Without blanks and tabs at both ends; line breaks stay.
std::string_view trimmedBlanks(std::string_view text);

/// Full lower-case mapping, independent of the locale.
std::string lowercased(std::string_view text);
/// A to Z only.
std::string asciiLowercased(std::string_view text);
bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b);

/// Number of user-perceived characters (extended grapheme clusters).
std::size_t characterCount(std::string_view text);
/// The first `count` user-perceived characters.
std::string_view firstCharacters(std::string_view text, std::size_t count);

}  // namespace parvela
