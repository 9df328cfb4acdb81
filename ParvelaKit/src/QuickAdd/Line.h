#pragma once

#include "QuickAdd/Characters.h"
#include "QuickAdd/SpaceMap.h"
#include "QuickAdd/Vocabulary.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace parvela::QuickAdd {

/// A piece of the line between white space. Its core is the piece without the punctuation around it, and may be empty.
/// Offsets are in UTF-16 code units of the line.
struct Word {
    std::uint32_t start = 0;   ///< of the core
    std::uint32_t end = 0;     ///< of the core
    std::uint32_t rawEnd = 0;  ///< of the whole piece
    std::uint32_t lowerStart = 0;
    std::uint32_t lowerLength = 0;
    Term term;
    bool consumed = false;  ///< belongs to a token
    bool literal = false;   ///< to be taken as plain text
    bool quoted = false;    ///< belongs to a quoted name that is no label
};

/// A line cut into words. The text must outlive it.
class Line {
public:
    explicit Line(std::u16string_view text);

    std::u16string_view text() const { return text_; }
    /// Offsets are those of the line.
    const SpaceMap& spaces() const { return spaces_; }
    std::size_t size() const { return words_.size(); }
    const Word& operator[](std::size_t index) const { return words_[index]; }

    /// Whether there is a "#" anywhere, without which there is no label.
    bool hasHash() const { return hasHash_; }

    /// The lower-cased core.
    std::u16string_view lower(std::size_t index) const {
        return {lowered_.data() + words_[index].lowerStart, words_[index].lowerLength};
    }

    /// Whether the word exists and may still be recognised.
    bool isAvailable(std::size_t index) const {
        if (index >= words_.size()) return false;
        const Word& word = words_[index];
        return !word.consumed && !word.literal && !word.quoted;
    }
    /// What the word stands for; nothing when it is not available.
    Term term(std::size_t index) const { return isAvailable(index) ? words_[index].term : Term(); }

    void consume(std::size_t index) { words_[index].consumed = true; }
    void makeLiteral(std::size_t index) { words_[index].literal = true; }
    void makeQuoted(std::size_t index) { words_[index].quoted = true; }

private:
    enum class Characters { ascii, any };

    /// Lower-cases what is ASCII, and tells whether that is all. Looks for "#" on the way.
    Characters lowerAscii();
    void split();
    void lowerFully();
    void lowerEachWord();

    static constexpr std::size_t padding = SpaceMap::blockSize;  // behind the lower-cased line, for reading in blocks

    std::u16string_view text_;
    SmallBuffer<char16_t, 256 + padding> lowered_;
    SpaceMap spaces_;
    SmallBuffer<Word, 48> words_;
    bool hasHash_ = false;
};

}  // namespace parvela::QuickAdd
