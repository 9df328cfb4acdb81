#include "DoctorCommand.h"

#include <Platform/Diagnostics.h>
#include <Platform/MainLoop.h>
#include <Platform/OfflineQueueEnvironment.h>
#include <Platform/SoupTransport.h>

#include <algorithm>

namespace parvela {

ExitStatus showDiagnostics(OutputForm form, const CommandSession& session, const Console& console) {
    const OfflineQueue queue(offlineQueueEnvironment(*session.clock));
    const auto rows = runUntilDone(Diagnostics::run({.session = session.session,
                                                     .queue = queue.status().get(),
                                                     .transport = SoupTransport::shared(),
                                                     .applicationId = PARVELA_APP_ID}));
    if (form == OutputForm::json) {
        auto list = nlohmann::json::array();
        for (const Diagnostic& row : rows) {
            list.push_back({{"what", row.what},
                            {"verdict", Diagnostics::name(row.verdict)},
                            {"finding", row.finding},
                            {"remedy", row.remedy}});
        }
        console.json(list);
    } else {
        std::vector<Console::Row> lines;
        for (const Diagnostic& row : rows) {
            const auto style =
                row.verdict == Diagnostic::Verdict::good ? Console::Style::plain : Console::Style::warning;
            lines.push_back({{std::string(Diagnostics::name(row.verdict)), style}, {row.what}, {row.finding}});
            if (!row.remedy.empty()) lines.push_back({{}, {}, {row.remedy, Console::Style::dim}});
        }
        console.table(lines);
    }
    const bool anyProblem = std::ranges::find(rows, Diagnostic::Verdict::problem, &Diagnostic::verdict) != rows.end();
    return anyProblem ? ExitStatus::failure : ExitStatus::success;
}

}  // namespace parvela
