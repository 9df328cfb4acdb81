#pragma once

#include <ParvelaKit/OfflineQueue.h>
#include <ParvelaKit/ParvelaSession.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Transport.h>

#include <string>
#include <string_view>
#include <vector>

namespace parvela {

/// One thing that Parvela needs or uses, and how it stands.
struct Diagnostic {
    enum class Verdict {
        good,
        notice,   ///< Parvela works, but something is missing or in the way
        problem,  ///< something does not work
    };

    std::string what;
    Verdict verdict = Verdict::good;
    std::string finding;
    std::string remedy;  ///< what the user can do about it; empty when nothing has to be done

    bool operator==(const Diagnostic&) const = default;
};

/// Finds out how Parvela stands on this desktop. Nothing in the result is secret: it can be copied into a report.
struct Diagnostics {
    struct Subject {
        ParvelaSession session;
        OfflineQueueStatus queue;
        Transport transport;        ///< for asking whether the server can be reached
        std::string applicationId;  ///< bus name and desktop file
    };

    /// Versions, session, bus, tray, portal, keyring, notifications, renderer, server, link, waiting lines, files,
    /// links and start at login, in this order. Starts no other program and asks the user nothing. Takes some seconds
    /// at most.
    static Task<std::vector<Diagnostic>> run(Subject subject);

    /// "good", "notice" or "problem".
    static std::string_view name(Diagnostic::Verdict verdict);
    /// For a report: one paragraph each.
    static std::string text(const std::vector<Diagnostic>& rows);
};

}  // namespace parvela
