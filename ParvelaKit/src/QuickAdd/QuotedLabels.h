#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace parvela::QuickAdd {

/// A "#" with a quoted name behind it. Offsets are in UTF-16 code units of the line.
struct QuotedLabel {
    std::size_t start = 0;
    std::size_t end = 0;  ///< behind the closing quotation mark
    std::u16string_view name;
};

/// Goes through the quoted labels of a line, from front to back, in time linear in the line.
class QuotedLabels {
public:
    explicit QuotedLabels(std::u16string_view line) : line_(line) {}

    std::optional<QuotedLabel> next();

private:
    std::u16string_view line_;
    std::size_t position_ = 0;
};

}  // namespace parvela::QuickAdd
