#pragma once

#include <ParvelaKit/QuickAddRecords.h>

#include <span>
#include <string>
#include <string_view>

namespace parvela::QuickAdd {

/// The line without its tokens, blanks and punctuation tidied where a token was. The tokens are sorted and disjoint.
std::string titleWithout(std::span<const QuickAddToken> tokens, std::u16string_view line);

}  // namespace parvela::QuickAdd
