#include "QuickAdd/QuotedLabels.h"

namespace parvela::QuickAdd {

std::optional<QuotedLabel> QuotedLabels::next() {
    constexpr std::u16string_view opening = u"\"\u201c";
    constexpr std::u16string_view closing = u"\"\u201d";
    for (;;) {
        const std::size_t start = line_.find(u'#', position_);
        if (start == std::u16string_view::npos) return std::nullopt;
        position_ = start + 1;
        if (position_ == line_.size() || !opening.contains(line_[position_])) continue;
        const std::size_t nameStart = start + 2;
        const std::size_t nameEnd = line_.find_first_of(closing, nameStart);
        if (nameEnd == std::u16string_view::npos) {
            position_ = line_.size();  // nothing later can be closed either
            return std::nullopt;
        }
        if (nameEnd == nameStart) continue;
        position_ = nameEnd + 1;
        return QuotedLabel{start, position_, line_.substr(nameStart, nameEnd - nameStart)};
    }
}

}  // namespace parvela::QuickAdd
