#include "DesktopChecks.h"

#include <ParvelaKit/Records.h>
#include <ParvelaKit/ServerConfig.h>
#include <Platform/Diagnostics.h>
#include <Platform/LocalPorts.h>
#include <Platform/MainLoop.h>

#include <chrono>
#include <iterator>
#include <stop_token>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

using Verdict = Diagnostic::Verdict;

constexpr std::chrono::seconds serverPatience{5};

/// Any answer counts, an error status too.
Task<bool> answers(Transport transport, Url url) {
    HttpRequest request{.method = "GET", .url = std::move(url), .timeout = serverPatience};
    auto asking = transport(std::move(request), {});
    const auto answer = co_await asking;
    co_return answer.has_value() || answer.error() == TransportError::invalidResponse;
}

Task<Diagnostic> server(ServerConfig config, Transport transport) {
    const std::string what = "Server";
    const std::string site = ServerConfig::origin(config.apiURL);
    const std::string app = ServerConfig::origin(config.appURL);
    const ServerConfig& local = ServerConfig::local();
    if (config.appURL == local.appURL && config.apiURL == local.apiURL) {
        if (const auto port = LocalPorts::takenByAnotherUser()) {
            co_return Diagnostic{
                what, Verdict::problem,
                fmt::format("Port {} of this machine is taken by another user, who receives what you send.", *port),
                std::string(LocalPorts::remedy)};
        }
    }
    auto askingSite = answers(transport, config.apiURL);
    auto askingApp = answers(transport, config.appURL);
    const bool siteAnswers = co_await askingSite;
    const bool appAnswers = co_await askingApp;
    const std::string remedy =
        config.mode == ServerConfig::Mode::local
            ? "Start the service of this machine with “parvela --local”, or choose another server in Settings."
            : "Check your connection and the server in Settings.";
    if (!siteAnswers) {
        co_return Diagnostic{what, Verdict::problem, fmt::format("{} can't be reached.", site), remedy};
    }
    if (!appAnswers) {
        co_return Diagnostic{what, Verdict::problem,
                             fmt::format("{} answers, but the web app at {} can't be reached.", site, app), remedy};
    }
    if (!ServerConfig::allowsToken(config.apiURL)) {
        co_return Diagnostic{what, Verdict::problem,
                             fmt::format("{} is not encrypted, so no token is sent there.", site),
                             "Use an https address."};
    }
    co_return Diagnostic{what, Verdict::good, fmt::format("{} and the web app at {} answer.", site, app), ""};
}

Task<Diagnostic> link(ParvelaSession session) {
    const std::string what = "Link";
    auto connecting = session.connect();
    const auto api = co_await connecting;
    if (!api && api.error() == SecretStatus::notFound) {
        co_return Diagnostic{what, Verdict::notice, "This device is not linked.",
                             "Sign in in Parvela's window and allow the link, or run “parvela link-token”."};
    }
    if (!api) {
        const char* const reason = api.error() == SecretStatus::locked ? "is locked" : "does not answer";
        co_return Diagnostic{what, Verdict::notice,
                             fmt::format("Whether this device is linked is not known while the keyring {}.", reason),
                             "Do what is said about the keyring, and look again."};
    }
    std::stop_source stop;
    const MainLoopTimer limit(serverPatience, [&stop] { stop.request_stop(); });
    auto asking = api->send<Me>(Endpoint::me(), stop.get_token());
    const auto me = co_await asking;
    if (me) {
        const std::string workspace = me->workspace ? fmt::format(" to the workspace “{}”", me->workspace->name) : "";
        co_return Diagnostic{what, Verdict::good, fmt::format("This device is linked{}.", workspace), ""};
    }
    const auto& error = me.error().error();
    if (error && error->kind() == APIError::Case::unauthorized) {
        co_return Diagnostic{what, Verdict::problem, "The stored token is no longer valid.",
                             "Link this device again, or run “parvela link-token” with a new token."};
    }
    co_return Diagnostic{what, Verdict::notice, "A token is stored, but it could not be checked now.",
                         error.value_or(APIError::timedOut()).message()};
}

Diagnostic waitingLines(const OfflineQueueStatus& queue) {
    const std::string what = "Waiting lines";
    if (queue.notice) {
        return {what, Verdict::problem, *queue.notice, "Check the folder of Parvela's data and the space on the disk."};
    }
    const std::size_t open = queue.waiting + queue.sending;
    const std::string waiting = fmt::format("{} {} to be added", open, open == 1 ? "waits" : "wait");
    if (queue.failed > 0) {
        return {what, Verdict::notice, fmt::format("{}, {} could not be added.", waiting, queue.failed),
                "Open quick add to try the failed ones again or to discard them."};
    }
    if (open > 0) {
        return {what, Verdict::notice, waiting + ".", "Parvela adds them when it runs and the server answers."};
    }
    return {what, Verdict::good, "No line waits to be added.", ""};
}

}  // namespace

Task<std::vector<Diagnostic>> Diagnostics::run(Subject subject) {
    auto askingServer = server(subject.session.server(), subject.transport);
    auto askingLink = link(subject.session);
    auto askingBus = diagnostics::busServices(subject.applicationId);
    std::vector<Diagnostic> rows{diagnostics::versions(), diagnostics::sessionType()};
    auto services = co_await askingBus;
    std::ranges::move(services, std::back_inserter(rows));
    rows.push_back(diagnostics::renderer(subject.session.prefs().safeRenderer()));
    auto serverRow = co_await askingServer;
    auto linkRow = co_await askingLink;
    rows.push_back(std::move(serverRow));
    rows.push_back(std::move(linkRow));
    rows.push_back(waitingLines(subject.queue));
    rows.push_back(diagnostics::files());
    rows.push_back(diagnostics::links(subject.applicationId));
    rows.push_back(diagnostics::startAtLogin(subject.applicationId));
    co_return rows;
}

std::string_view Diagnostics::name(Verdict verdict) {
    switch (verdict) {
        case Verdict::good:
            return "good";
        case Verdict::notice:
            return "notice";
        case Verdict::problem:
            break;
    }
    return "problem";
}

std::string Diagnostics::text(const std::vector<Diagnostic>& rows) {
    std::string text;
    for (const Diagnostic& row : rows) {
        text += fmt::format("{}: {}: {}\n", row.what, name(row.verdict), row.finding);
        if (!row.remedy.empty()) text += fmt::format("    {}\n", row.remedy);
    }
    return text;
}

}  // namespace parvela
