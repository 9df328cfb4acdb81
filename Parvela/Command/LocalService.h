#pragma once

#include <optional>
#include <string>

namespace parvela {

/// The Parvela service of this machine, as the local server mode expects it.
struct LocalService {
    enum class Workspace { own, demo };

    /// Starts it when nothing answers at its addresses, and waits until it does; it goes on after this program. The
    /// reason when it does not come up, or when another user has its ports. `demo` fills an empty workspace with
    /// examples.
    static std::optional<std::string> ensureRunning(Workspace workspace);
};

}  // namespace parvela
