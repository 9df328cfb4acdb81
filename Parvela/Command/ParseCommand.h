#pragma once

#include "Console.h"
#include "ExitStatus.h"

#include <optional>
#include <string>

namespace parvela {

struct ParseOptions {
    std::string line;
    std::optional<std::string> today;  ///< "YYYY-MM-DD"
    bool json = false;
    bool manyLines = false;
};

/// Shows what quick add makes of one line, or of each line "YYYY-MM-DD<TAB>line" on standard input. Names are taken as
/// they are written. Reads no settings and sends nothing.
///
/// With many lines there is one JSON object on one line for each, in order; a line that makes no sense gives
/// {"error": "…"} and lets the command end with ExitStatus::usage. Answers are flushed before waiting for more input.
ExitStatus parseLines(const ParseOptions& options, const Console& console);

}  // namespace parvela
