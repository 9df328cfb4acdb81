#pragma once

#include "Http/EventStream.h"
#include "Http/HttpServer.h"
#include "Http/RateLimiter.h"
#include "Http/Site.h"
#include "Http/WebAssets.h"
#include "Routes/Backend.h"
#include "Routes/Routes.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace parvela::service {

/// The whole service: one workspace in one database, offered on two loopback origins, the API site and the web app.
class Service {
public:
    struct Options {
        std::filesystem::path database;  ///< ":memory:" for one that is not kept
        std::uint16_t webPort = 3100;    ///< 0 for any free port, here and below
        std::uint16_t apiPort = 3213;
        bool demo = false;
        bool openSignUp = false;
        std::optional<std::filesystem::path>
            assets;                    ///< a folder to serve the web app from instead of the built-in one
        int requestsPerMinute = 1200;  ///< for each person
        PasswordCost passwordCost = PasswordCost::interactive;
        std::optional<Zone> zone;  ///< of people who have not chosen one; the machine's when absent
    };

    /// Opens or creates the database. Throws std::runtime_error when that cannot be done.
    Service(Options options, const Clock& clock, Random& random);
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service();

    /// Binds both ports and begins to answer, on the thread's default main context. An error says what stands in the
    /// way.
    Result<void, std::string> start();

    const std::string& webOrigin() const noexcept { return backend_.settings.webOrigin; }
    const std::string& apiOrigin() const noexcept { return backend_.settings.apiOrigin; }
    Backend& backend() noexcept { return backend_; }

private:
    void buildApiSite(std::uint16_t port);
    void buildWebSite(std::uint16_t port);
    Result<std::optional<Caller>, HttpError> bearer(const Request& request);
    void tidy();

    Options options_;
    Database database_;
    Backend backend_;
    RateLimiter requests_;
    RateLimiter failedSignIns_;
    EventStream events_;
    WebAssets assets_;
    std::unique_ptr<SessionRoutes> sessions_;
    std::unique_ptr<Site> apiSite_, webSite_;
    HttpServer apiServer_, webServer_;
    unsigned tidyTimer_ = 0;
};

}  // namespace parvela::service
