#pragma once

#include "CommandSession.h"
#include "Console.h"
#include "ExitStatus.h"

#include <string>

namespace parvela {

/// What shells complete: one word a line, a tab, and what it stands for. `kind` is "boards" (names) or "keys" (of open
/// tasks).
///
/// A shell that waits for the network is worse than one that offers nothing, so the words are kept for a minute in the
/// user's cache folder, older ones are used when keyring and service take longer than a second, and nothing is said
/// about failures.
ExitStatus showWords(const std::string& kind, const CommandSession& session, const Console& console);

/// Removes what was kept.
void forgetWords();

}  // namespace parvela
