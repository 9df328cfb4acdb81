#include "LinkCommands.h"

#include "RunningProgram.h"
#include "WordsCommand.h"

#include <Platform/MainLoop.h>

#include <utility>

#include <fmt/format.h>

namespace parvela {

ExitStatus linkToken(OutputForm form, const CommandSession& session, const Console& console) {
    const std::string site = ServerConfig::origin(session.session.server().apiURL);
    auto text = console.readSecret(fmt::format("Token for {}: ", site));
    if (!text) return console.fail("No token was given on standard input.", ExitStatus::usage);
    const auto saved = runUntilDone(session.session.savePastedToken(std::move(*text)));
    if (!saved) {
        const bool malformed = std::holds_alternative<APIError>(saved.error());
        return console.fail(message(saved.error()), malformed ? ExitStatus::usage : ExitStatus::failure);
    }
    forgetWords();
    RunningProgram::tellSettingsChanged();
    if (form == OutputForm::json) {
        console.json({{"server", site}, {"linked", true}});
    } else {
        console.line(fmt::format("The token for {} is saved.", site));
    }
    return ExitStatus::success;
}

ExitStatus unlink(OutputForm form, const CommandSession& session, const Console& console) {
    const Unlinked outcome = runUntilDone(session.session.unlink());
    forgetWords();
    RunningProgram::tellSettingsChanged();
    if (outcome == Unlinked::stillKept || outcome == Unlinked::noAnswer) return console.fail(message(outcome));
    if (form == OutputForm::json) {
        console.json({{"linked", false},
                      {"hadToken", outcome != Unlinked::nothingStored},
                      {"revoked", outcome == Unlinked::revoked}});
    } else {
        console.line(message(outcome));
    }
    return ExitStatus::success;
}

}  // namespace parvela
