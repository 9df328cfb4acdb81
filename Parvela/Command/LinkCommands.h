#pragma once

#include "CommandSession.h"
#include "Console.h"
#include "ExitStatus.h"

namespace parvela {

/// Stores a token read from standard input for the API site in use.
ExitStatus linkToken(OutputForm form, const CommandSession& session, const Console& console);
/// Takes the token back at the service and forgets it here.
ExitStatus unlink(OutputForm form, const CommandSession& session, const Console& console);

}  // namespace parvela
