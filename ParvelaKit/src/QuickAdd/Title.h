#pragma once

#include "QuickAdd/Line.h"

#include <ParvelaKit/QuickAddRecords.h>

#include <span>
#include <string>

namespace parvela::QuickAdd {

/// The line without its tokens, blanks and punctuation tidied where a token was. The tokens are sorted and disjoint.
std::string titleWithout(std::span<const QuickAddToken> tokens, const Line& line);

}  // namespace parvela::QuickAdd
