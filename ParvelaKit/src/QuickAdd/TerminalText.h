#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace parvela::QuickAdd {

/// A text made fit for a terminal, and where its pieces have come to stand.
struct TerminalText {
    std::string text;
    /// By UTF-16 offset of the original, the end included: the column before that unit. Within a user-perceived
    /// character it is the column of its start.
    std::vector<std::size_t> columns;
};

/// `column` is where the text begins, which the width of tabs depends on.
TerminalText forTerminal(std::string_view text, std::size_t column = 0);

}  // namespace parvela::QuickAdd
