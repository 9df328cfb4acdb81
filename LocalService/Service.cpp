#include "Service.h"

#include "Domain/Demo.h"

#include <ParvelaKit/Text.h>

#include <fmt/format.h>

namespace parvela::service {

namespace {

/// Five wrong passwords at once, then one more every minute.
constexpr RateLimiter::Limit failedSignIns{.burst = 5, .perMinute = 1};
constexpr auto deletedKept = std::chrono::days(30);
constexpr unsigned tidySeconds = 60 * 60;

HttpSite httpSite(Site& site) {
    return {.admit = [&site](const Request& request) { return site.admit(request); },
            .bodyLimit = [&site](const Request& request) { return site.bodyLimit(request); },
            .handle = [&site](const Request& request) { return site.handle(request); }};
}

}  // namespace

Service::Service(Options options, const Clock& clock, Random& random)
    : options_(std::move(options)),
      database_(options_.database),
      backend_(database_, clock, random, options_.passwordCost, options_.zone.value_or(Zone::local())),
      requests_(clock, {.burst = static_cast<double>(options_.requestsPerMinute),
                        .perMinute = static_cast<double>(options_.requestsPerMinute)}),
      failedSignIns_(clock, failedSignIns),
      events_(backend_.stores.boards, backend_.changes),
      assets_(options_.assets) {
    backend_.settings.demo = options_.demo;
    backend_.settings.openSignUp = options_.openSignUp;
    tidy();
    if (options_.demo) {
        demo::seed(backend_.stores, backend_.actions, backend_.passwords, clock,
                   backend_.machineZone.dayOf(clock.now()));
    }
    tidyTimer_ = g_timeout_add_seconds(
        tidySeconds,
        [](gpointer self) -> gboolean {
            static_cast<Service*>(self)->tidy();
            return G_SOURCE_CONTINUE;
        },
        this);
}

Service::~Service() {
    g_source_remove(tidyTimer_);
}

void Service::tidy() {
    try {
        backend_.stores.accounts.removeExpired();
        backend_.stores.tasks.purgeDeletedBefore(backend_.clock.now() - deletedKept);
    } catch (const DatabaseError& error) {
        // What is left over now goes at the next round.
        g_warning("Old rows could not be removed: %s", error.what());
    }
}

Result<void, std::string> Service::start() {
    const auto apiPort = apiServer_.listen(options_.apiPort);
    if (!apiPort) return Failure(apiPort.error());
    const auto webPort = webServer_.listen(options_.webPort);
    if (!webPort) return Failure(webPort.error());
    backend_.settings.apiOrigin = fmt::format("http://127.0.0.1:{}", *apiPort);
    backend_.settings.webOrigin = fmt::format("http://localhost:{}", *webPort);
    buildApiSite(*apiPort);
    buildWebSite(*webPort);
    apiServer_.serve(httpSite(*apiSite_));
    webServer_.serve(httpSite(*webSite_));
    return {};
}

Result<std::optional<Caller>, HttpError> Service::bearer(const Request& request) {
    const auto header = request.header("Authorization");
    if (!header) return std::optional<Caller>();
    const std::string_view value = trimmed(*header);
    constexpr std::string_view scheme = "bearer ";
    if (value.size() <= scheme.size() || !equalsIgnoringAsciiCase(value.substr(0, scheme.size()), scheme)) {
        return Failure(HttpError::unauthorized("Use a bearer token."));
    }
    const auto token = backend_.stores.tokens.findBySecret(trimmed(value.substr(scheme.size())));
    auto account = token ? backend_.stores.accounts.find(token->account) : std::nullopt;
    if (!account) return Failure(HttpError::unauthorized("This token is invalid or revoked."));
    return Caller{.account = std::move(*account), .canWrite = token->canWrite, .token = token->id};
}

void Service::buildApiSite(std::uint16_t port) {
    apiSite_ = std::make_unique<Site>(
        Site::Policy{.port = port, .authenticate = [this](const Request& request) { return bearer(request); }},
        requests_);
    addApiRoutes(apiSite_->router(), backend_);
    addSignInProvider(apiSite_->router(), backend_);
}

void Service::buildWebSite(std::uint16_t port) {
    // Cookies do not tell ports apart, so two services on one machine need two names.
    sessions_ =
        std::make_unique<SessionRoutes>(backend_, events_, failedSignIns_, fmt::format("parvela_session_{}", port));
    webSite_ = std::make_unique<Site>(
        Site::Policy{.port = port,
                     .authenticate = [this](const Request& request) -> Result<std::optional<Caller>, HttpError> {
                         return sessions_->caller(request);
                     },
                     .checkChange = [](const Request& request) -> std::optional<HttpError> {
                         // A form on another site cannot set this header.
                         if (request.header("X-Parvela-Web") == "1") return {};
                         return HttpError::forbidden("This call is for the Parvela web app only.");
                     },
                     .fallback = [this](const Request& request) { return assets_.serve(request); }},
        requests_);
    Router& router = webSite_->router();
    addApiRoutes(router, backend_);
    addBoardRoutes(router, backend_);
    addFileRoutes(router, backend_);
    addTaskRoutes(router, backend_);
    addTokenRoutes(router, backend_);
    sessions_->addTo(router);
}

}  // namespace parvela::service
