#pragma once

#include "Store/Rows.h"

#include <ParvelaKit/Result.h>

#include <string>
#include <string_view>
#include <vector>

namespace parvela::service {

/// Why a name in a request stands for nobody and nothing. Clients tell these refusals from others by the marked words,
/// put the rejected word back into the title and try again, so the marked words never change.
struct UnresolvedReference {
    std::string message;

    static UnresolvedReference noLabel(std::string_view board, std::string_view name);  ///< "has no label"
    static UnresolvedReference nobody(std::string_view name);                           ///< "No one called"
    static UnresolvedReference ambiguous(std::string_view name,
                                         std::string_view candidates);  ///< "matches more than one person"
    static UnresolvedReference cannotSee(std::string_view person, std::string_view board);  ///< "can't see the"
};

/// Finds labels by id or name: the exact name without regard to case first, then with blanks, "-" and "_" alike.
Result<LabelId, UnresolvedReference> resolveLabel(std::string_view text, const BoardRow& board,
                                                  const std::vector<LabelRow>& labels);

/// Finds a person by id, whole e-mail address, whole name, or one of the handles that quick add knows: first name, name
/// without blanks, e-mail address up to the "@"; last, by the beginning of a handle when it fits one person only. A
/// leading
/// "@" is ignored.
Result<PersonId, UnresolvedReference> resolvePerson(std::string_view text, const std::vector<Account>& people);

}  // namespace parvela::service
