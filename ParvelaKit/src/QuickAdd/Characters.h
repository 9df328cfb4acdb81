#pragma once

#include "QuickAdd/SmallBuffer.h"

#include <string>
#include <string_view>

namespace parvela::QuickAdd {

/// Room for a line of ordinary length.
using Utf16Buffer = SmallBuffer<char16_t, 256>;

bool isWhiteSpaceOutsideAscii(char16_t unit);

/// Unicode White_Space; all of it lies in the basic plane.
inline bool isWhiteSpace(char16_t unit) {
    if (unit > 0x7f) return isWhiteSpaceOutsideAscii(unit);
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

/// What is stripped from the front of a word.
inline bool isLeadingPunctuation(char16_t unit) {
    return unit == u'(' || unit == u'[';
}

/// What is stripped from the end of a word.
inline bool isTrailingPunctuation(char16_t unit) {
    switch (unit) {
        case u',':
        case u'.':
        case u';':
        case u':':
        case u'!':
        case u'?':
        case u')':
        case u']':
        case u'"':
        case u'\'':
        case u'\u201d':
        case u'\u2019':
            return true;
        default:
            return false;
    }
}

inline bool isAsciiDigit(char32_t character) {
    return character >= U'0' && character <= U'9';
}

inline char16_t asciiLower(char16_t unit) {
    return static_cast<char16_t>(unit >= u'A' && unit <= u'Z' ? unit + 32 : unit);
}

/// Calls `visit(position)` for blocks of `size` that cover 0 … `length`; the last one overlaps the one before it, so
/// that every block has its full size, which compilers turn into a few vector instructions. False when the length is
/// below `size`.
template <std::size_t size, class Visitor>
bool forEachBlock(std::size_t length, Visitor visit) {
    if (length < size) return false;
    for (std::size_t position = 0; position + size <= length; position += size) visit(position);
    if (length % size != 0) visit(length - size);
    return true;
}

bool isAscii(std::u16string_view text);
std::u16string_view trimmed(std::u16string_view text);

/// Invalid sequences become U+FFFD. Throws std::length_error from 2³¹ bytes on.
void decodeUtf8(std::string_view text, Utf16Buffer& decoded);
std::u16string utf16(std::string_view text);
/// Unpaired surrogates become U+FFFD.
void appendUtf8(std::string& text, std::u16string_view appended);
std::string utf8(std::u16string_view text);

/// Full lower-case mapping, independent of the locale.
std::u16string lowercased(std::u16string_view text);
/// Lower-cased and in canonical composition, so that canonically equivalent names become the same text.
std::u16string folded(std::u16string_view text);

}  // namespace parvela::QuickAdd
