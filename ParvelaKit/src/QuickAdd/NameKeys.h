#pragma once

#include <ParvelaKit/QuickAddRecords.h>

#include <string>
#include <string_view>
#include <vector>

namespace parvela::QuickAdd {

/// The texts by which a member is found: first name, whole name without white space, and what stands before the "@" of
/// the e-mail address. All are folded; empty ones are left out.
std::vector<std::u16string> memberKeys(const QuickAddMember& member);

/// A name for comparison: folded and without white space at its ends.
std::u16string labelKey(std::u16string_view name);
/// The key with each run of white space, "_" and "-" as one blank, and none at the ends.
std::u16string looseLabelKey(std::u16string_view key);

/// Whether what is typed so far, folded, begins the name, one of its words or the e-mail address.
bool isBeginning(std::u16string_view query, const QuickAddMember& member);
/// Likewise for a label; the query is a loose label key.
bool isBeginning(std::u16string_view query, const QuickAddLabel& label);

/// How the name may be written into a line, best first. Not every one need find it.
std::vector<std::string> memberSpellings(const QuickAddMember& member);
std::vector<std::string> labelSpellings(const QuickAddLabel& label);

}  // namespace parvela::QuickAdd
