#include "QuickAdd/Title.h"

#include "QuickAdd/Characters.h"

namespace parvela::QuickAdd {

namespace {

bool isSeparator(char16_t unit) {
    return unit == u',' || unit == u';' || unit == u':';
}

bool isPunctuation(char16_t unit) {
    return isSeparator(unit) || unit == u'.' || unit == u'!' || unit == u'?';
}

/// Joins the pieces of a line between its tokens. White space between words becomes one blank as they are written.
class TitleBuilder {
public:
    explicit TitleBuilder(const Line& line) : text_(line.text()), spaces_(line.spaces()) {}

    /// The piece before the first token.
    void begin(std::size_t end) { append(0, end); }

    /// A piece behind a token. It begins with the punctuation that followed the token's word.
    void add(std::size_t start, std::size_t end) {
        owesBlank_ = false;
        const std::size_t mark = spaces_.nextText(start);
        const bool beginsWithMark =
            mark < end && isPunctuation(text_[mark]) && (mark + 1 == end || isWhiteSpace(text_[mark + 1]));
        if (beginsWithMark && (isEmpty() || (isSeparator(last()) && isSeparator(text_[mark])))) start = mark + 1;
        append(start, end);
    }

    std::string finish() {
        if (!isEmpty() && isSeparator(last())) {
            title_.resize(title_.size() - 1);
            if (!isEmpty() && last() == u' ') title_.resize(title_.size() - 1);
        }
        return utf8({title_.data(), title_.size()});
    }

private:
    bool isEmpty() const { return title_.size() == 0; }
    char16_t last() const { return title_[title_.size() - 1]; }

    void append(std::size_t start, std::size_t end) {
        for (std::size_t position = start; position < end;) {
            const std::size_t textStart = std::min(spaces_.nextText(position), end);
            if (textStart > position) owesBlank_ = true;
            const std::size_t textEnd = endOfTidyText(textStart, end);
            write(text_.substr(textStart, textEnd - textStart));
            position = textEnd;
        }
        owesBlank_ = true;
    }

    /// How far the words from here on are joined by single blanks already.
    std::size_t endOfTidyText(std::size_t start, std::size_t end) const {
        for (;;) {
            const std::size_t space = spaces_.nextSpace(start);
            if (space + 1 >= end) return std::min(space, end);
            if (text_[space] != u' ' || spaces_.isSpace(space + 1)) return space;
            start = space + 1;
        }
    }

    void write(std::u16string_view tidyText) {
        if (tidyText.empty()) return;
        if (owesBlank_ && !isEmpty()) title_.push(u' ');
        owesBlank_ = false;
        const std::size_t before = title_.size();
        title_.resize(before + tidyText.size());
        std::ranges::copy(tidyText, title_.data() + before);
    }

    std::u16string_view text_;
    const SpaceMap& spaces_;
    Utf16Buffer title_;
    bool owesBlank_ = false;  ///< before the next word
};

}  // namespace

std::string titleWithout(std::span<const QuickAddToken> tokens, const Line& line) {
    TitleBuilder title(line);
    std::size_t gapStart = 0;
    const auto addGap = [&](std::size_t end) { gapStart == 0 ? title.begin(end) : title.add(gapStart, end); };
    for (const auto& token : tokens) {
        addGap(token.start);
        gapStart = token.end;
    }
    addGap(line.text().size());
    return title.finish();
}

}  // namespace parvela::QuickAdd
