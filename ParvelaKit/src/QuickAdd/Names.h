#pragma once

#include <ParvelaKit/QuickAddRecords.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace parvela::QuickAdd {

/// Counts the work of looking through a list name by name, and tells when an index would have been cheaper by now.
///
/// A line mostly names one or two people, for which comparing in place beats any preparation. A line of thousands of
/// names must not cost lines times names, though. So a search starts in place and changes over once it has spent about
/// what the index costs; the sum is never more than twice the better way.
class SearchBudget {
public:
    explicit SearchBudget(std::size_t names) : left_(static_cast<std::ptrdiff_t>(256 + 64 * names)) {}

    void spend(std::size_t steps) { left_ -= static_cast<std::ptrdiff_t>(steps); }
    bool isSpent() const { return left_ < 0; }

private:
    std::ptrdiff_t left_;
};

/// Finds people by handle. The list must outlive it.
class MemberSearch {
public:
    explicit MemberSearch(std::span<const QuickAddMember> members);
    ~MemberSearch();

    /// The one member of whom the handle is the first name, the whole name or the e-mail name; failing that, the one of
    /// whom it is the beginning of these, which takes two code units at least. None when it fits several people. The
    /// handle is in lower case.
    const QuickAddMember* find(std::u16string_view handle);

private:
    struct Index;

    const QuickAddMember* findInPlace(std::u16string_view key, std::size_t handleLength);

    std::span<const QuickAddMember> members_;
    SearchBudget budget_;
    std::unique_ptr<const Index> index_;
};

/// Finds labels by name. The list must outlive it.
class LabelSearch {
public:
    explicit LabelSearch(std::span<const QuickAddLabel> labels);
    ~LabelSearch();

    /// The first label of this name, case aside; failing that, the one label whose name differs only in how its words
    /// are joined (blanks, "_" and "-"). The name has no white space at its ends and is not empty.
    const QuickAddLabel* find(std::u16string_view name);

private:
    struct Index;

    const QuickAddLabel* findInPlace(std::u16string_view name);

    std::span<const QuickAddLabel> labels_;
    SearchBudget budget_;
    std::unique_ptr<const Index> index_;
};

}  // namespace parvela::QuickAdd
