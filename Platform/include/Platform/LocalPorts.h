#pragma once

#include <optional>
#include <string_view>

namespace parvela {

/// Who answers at ports of this machine. Ports belong to whoever comes first, not to a user.
struct LocalPorts {
    /// The first of the local service's ports at which a program of another user listens for this machine.
    static std::optional<int> takenByAnotherUser();
    /// What the user can do about it.
    static constexpr std::string_view remedy =
        "Start your own service with “parvela-local-service --web-port 3101 --api-port 3214”, and name it in Settings.";
};

}  // namespace parvela
