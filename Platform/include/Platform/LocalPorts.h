#pragma once

#include <initializer_list>
#include <optional>

namespace parvela {

/// Who answers at ports of this machine. Ports belong to whoever comes first, not to a user.
struct LocalPorts {
    /// The first of the ports at which a program of another user listens for this machine.
    static std::optional<int> takenByAnotherUser(std::initializer_list<int> ports);
};

}  // namespace parvela
