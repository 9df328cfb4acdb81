#pragma once

#include <ParvelaKit/QuickAddRecords.h>

#include <string>

namespace parvela::QuickAdd {

/// Appends the result as one line of compact JSON, in the order of the record's fields. Every key is always there; what
/// is absent is null. "repeat" holds "freq", "weekdays", "monthDay" and the texts "rule" and "display". Invalid UTF-8
/// in ids and names becomes U+FFFD.
///
/// Written by hand, since a stream of lines spends more time on a tree of JSON values than on the parsing.
void appendJson(std::string& text, const QuickAddResult& result);

}  // namespace parvela::QuickAdd
