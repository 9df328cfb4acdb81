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

class TitleBuilder {
public:
    /// The piece of the line before the first token.
    void begin(std::u16string_view gap) { append(gap); }

    /// A piece of the line behind a token. It begins with the punctuation that followed the token's word.
    void add(std::u16string_view gap) {
        trimEnd();
        std::size_t mark = 0;
        while (mark < gap.size() && isWhiteSpace(gap[mark])) ++mark;
        const bool beginsWithMark =
            mark < gap.size() && isPunctuation(gap[mark]) && (mark + 1 == gap.size() || isWhiteSpace(gap[mark + 1]));
        if (beginsWithMark) {
            const bool isEmpty = title_.size() == 0;
            const bool separatorsMeet = !isEmpty && isSeparator(title_[title_.size() - 1]) && isSeparator(gap[mark]);
            if (isEmpty || separatorsMeet) gap.remove_prefix(mark + 1);
        }
        append(gap);
    }

    std::string finish() {
        collapse();
        if (title_.size() > 0 && isSeparator(title_[title_.size() - 1])) {
            title_.resize(title_.size() - 1);
            trimEnd();
        }
        return utf8({title_.data(), title_.size()});
    }

private:
    void append(std::u16string_view gap) {
        const std::size_t before = title_.size();
        title_.resize(before + gap.size() + 1);
        std::ranges::copy(gap, title_.data() + before);
        title_[before + gap.size()] = u' ';
    }

    void trimEnd() {
        std::size_t size = title_.size();
        while (size > 0 && isWhiteSpace(title_[size - 1])) --size;
        title_.resize(size);
    }

    /// One blank for each run of white space, and none at the ends.
    void collapse() {
        std::size_t size = 0;
        bool isGap = false;
        for (std::size_t i = 0; i < title_.size(); ++i) {
            const char16_t unit = title_[i];
            if (isWhiteSpace(unit)) {
                isGap = size > 0;
                continue;
            }
            if (isGap) title_[size++] = u' ';
            isGap = false;
            title_[size++] = unit;
        }
        title_.resize(size);
    }

    Utf16Buffer title_;
};

}  // namespace

std::string titleWithout(std::span<const QuickAddToken> tokens, std::u16string_view line) {
    TitleBuilder title;
    std::size_t gapStart = 0;
    for (const auto& token : tokens) {
        const auto gap = line.substr(gapStart, token.start - gapStart);
        gapStart == 0 ? title.begin(gap) : title.add(gap);
        gapStart = token.end;
    }
    gapStart == 0 ? title.begin(line) : title.add(line.substr(gapStart));
    return title.finish();
}

}  // namespace parvela::QuickAdd
