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

}  // namespace parvela::QuickAdd
