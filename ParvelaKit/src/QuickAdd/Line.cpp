#include "QuickAdd/Line.h"

#include <array>
#include <cstring>
#include <type_traits>

#include <unicode/ustring.h>

namespace parvela::QuickAdd {

namespace {

constexpr char16_t capitalDottedI = u'\u0130';  // the one character whose lower-case form is longer

}  // namespace

Line::Line(std::u16string_view text) : text_(text) {
    const Characters characters = lowerAscii();
    spaces_.read(lowered_.data(), text_.size());
    split();
    if (characters == Characters::any) lowerFully();
    for (std::size_t i = 0; i < words_.size(); ++i) {
        Word& word = words_[i];
        word.term = findTerm(lowered_.data() + word.lowerStart, word.lowerLength);
    }
}

Line::Characters Line::lowerAscii() {
    lowered_.resize(text_.size() + padding);
    std::fill_n(lowered_.data() + text_.size(), padding, u'\0');
    constexpr std::size_t blockSize = 16;
    char16_t bits = 0;
    char16_t hashes = 0;
    const auto lower = [&](const char16_t* from, char16_t* to, auto size) {
        char16_t bitsHere = 0;
        char16_t hashesHere = 0;
        for (std::size_t i = 0; i < size; ++i) {
            bitsHere |= from[i];
            hashesHere |= from[i] == u'#';
            to[i] = asciiLower(from[i]);
        }
        bits |= bitsHere;
        hashes |= hashesHere;
    };
    const bool isDone = forEachBlock<blockSize>(text_.size(), [&](std::size_t position) {
        std::array<char16_t, blockSize> block{};
        std::memcpy(block.data(), text_.data() + position, sizeof(block));
        lower(block.data(), block.data(), std::integral_constant<std::size_t, blockSize>());
        std::memcpy(lowered_.data() + position, block.data(), sizeof(block));
    });
    if (!isDone) lower(text_.data(), lowered_.data(), text_.size());
    hasHash_ = hashes != 0;
    return bits < 0x80 ? Characters::ascii : Characters::any;
}

void Line::split() {
    for (std::size_t start = spaces_.nextText(0); start < text_.size();) {
        const std::size_t end = spaces_.nextSpace(start);
        Word word;
        word.start = static_cast<std::uint32_t>(start);
        word.rawEnd = word.end = static_cast<std::uint32_t>(end);
        while (word.start < word.end && isLeadingPunctuation(text_[word.start])) ++word.start;
        while (word.start < word.end && isTrailingPunctuation(text_[word.end - 1])) --word.end;
        word.lowerStart = word.start;
        word.lowerLength = word.end - word.start;
        words_.push(word);
        start = spaces_.nextText(end);
    }
}

void Line::lowerFully() {
    // In one go when that keeps every offset, which it does for all lines but those with that one character.
    if (!text_.contains(capitalDottedI)) {
        UErrorCode status = U_ZERO_ERROR;
        const auto length = static_cast<std::int32_t>(text_.size());
        const auto lowerLength = u_strToLower(lowered_.data(), length, text_.data(), length, "", &status);
        if (U_SUCCESS(status) && lowerLength == length) return;
    }
    lowerEachWord();
}

void Line::lowerEachWord() {
    constexpr std::size_t mostGrowth = 3;
    lowered_.resize(0);
    for (std::size_t i = 0; i < words_.size(); ++i) {
        Word& word = words_[i];
        const auto core = text_.substr(word.start, word.end - word.start);
        const std::size_t start = lowered_.size();
        lowered_.resize(start + core.size() * mostGrowth);
        UErrorCode status = U_ZERO_ERROR;
        const auto length = u_strToLower(lowered_.data() + start, static_cast<std::int32_t>(core.size() * mostGrowth),
                                         core.data(), static_cast<std::int32_t>(core.size()), "", &status);
        word.lowerStart = static_cast<std::uint32_t>(start);
        word.lowerLength = U_SUCCESS(status) ? static_cast<std::uint32_t>(length) : 0;
        lowered_.resize(start + word.lowerLength);
    }
    for (std::size_t i = 0; i < padding; ++i) lowered_.push(u'\0');
}

}  // namespace parvela::QuickAdd
