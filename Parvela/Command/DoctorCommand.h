#pragma once

#include "CommandSession.h"
#include "Console.h"
#include "ExitStatus.h"

namespace parvela {

/// Says how Parvela stands on this desktop. Fails when there is a problem.
ExitStatus showDiagnostics(OutputForm form, const CommandSession& session, const Console& console);

}  // namespace parvela
