#include "QuickAdd/Line.h"

#include <cstdlib>

#include <unicode/ustring.h>

namespace parvela::QuickAdd {

namespace {

bool isLeadingPunctuation(char16_t unit) {
    return unit == u'(' || unit == u'[';
}

bool isTrailingPunctuation(char16_t unit) {
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

constexpr char16_t capitalDottedI = u'\u0130';  // the one character whose lower-case form is longer

}  // namespace

Line::Line(std::u16string_view text) : text_(text) {
    const bool isWhole = lowerWhole();
    split();
    if (!isWhole) lowerEachWord();
    for (std::size_t i = 0; i < words_.size(); ++i) words_[i].term = findTerm(lower(i));
}

bool Line::lowerWhole() {
    lowered_.resize(text_.size());
    unsigned bits = 0;
    for (std::size_t i = 0; i < text_.size(); ++i) {
        bits |= text_[i];
        lowered_[i] = asciiLower(text_[i]);
    }
    if (bits < 0x80) return true;
    if (text_.contains(capitalDottedI)) return false;
    UErrorCode status = U_ZERO_ERROR;
    const auto length = static_cast<std::int32_t>(text_.size());
    return u_strToLower(lowered_.data(), length, text_.data(), length, "", &status) == length && U_SUCCESS(status);
}

void Line::split() {
    const auto length = static_cast<std::uint32_t>(text_.size());
    for (std::uint32_t i = 0; i < length;) {
        if (isWhiteSpace(text_[i])) {
            ++i;
            continue;
        }
        Word word;
        word.start = i;
        while (i < length && !isWhiteSpace(text_[i])) ++i;
        word.rawEnd = word.end = i;
        while (word.start < word.end && isLeadingPunctuation(text_[word.start])) ++word.start;
        while (word.start < word.end && isTrailingPunctuation(text_[word.end - 1])) --word.end;
        word.lowerStart = word.start;
        word.lowerLength = word.end - word.start;
        words_.push(word);
    }
}

void Line::lowerEachWord() {
    lowered_.resize(0);
    for (std::size_t i = 0; i < words_.size(); ++i) {
        Word& word = words_[i];
        const auto lower = lowercased(text_.substr(word.start, word.end - word.start));
        word.lowerStart = static_cast<std::uint32_t>(lowered_.size());
        word.lowerLength = static_cast<std::uint32_t>(lower.size());
        for (const char16_t unit : lower) lowered_.push(unit);
    }
}

}  // namespace parvela::QuickAdd
