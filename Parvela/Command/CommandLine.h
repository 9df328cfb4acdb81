#pragma once

namespace parvela {

/// The "parvela" command: its whole run. Gives the exit status; see ExitStatus.
int runCommandLine(int argc, char** argv);

}  // namespace parvela
