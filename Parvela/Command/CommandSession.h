#pragma once

#include "Console.h"

#include <ParvelaKit/ParvelaSession.h>
#include <Platform/JsonDefaultsStore.h>
#include <Platform/SystemClock.h>

#include <memory>

namespace parvela {

/// The user's settings, keyring and network, as the commands need them. Warns on the console about settings that cannot
/// be read or written.
struct CommandSession {
    explicit CommandSession(const Console& console);

    std::shared_ptr<JsonDefaultsStore> defaults;
    std::shared_ptr<SystemClock> clock;
    ParvelaSession session;
};

}  // namespace parvela
