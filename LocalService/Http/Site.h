#pragma once

#include "Http/RateLimiter.h"
#include "Http/Router.h"

#include <functional>
#include <string>

namespace parvela::service {

/// Rules that every request of one origin passes before a route sees it, and the one place where failures become
/// answers.
class Site {
public:
    struct Policy {
        std::uint16_t port = 0;
        /// Reads who calls from the request; an error refuses the request at once.
        std::function<Result<std::optional<Caller>, HttpError>(const Request&)> authenticate;
        /// What must hold for a request that changes something, besides the origin; none when all is well.
        std::function<std::optional<HttpError>(const Request&)> checkChange;
        /// Answers a GET that no route takes; without it, 404.
        std::function<Answer(const Request&)> fallback;
    };

    Site(Policy policy, RateLimiter& requests) : policy_(std::move(policy)), requests_(requests) {}

    Router& router() noexcept { return router_; }

    std::optional<HttpError> admit(const Request& request) const;
    std::size_t bodyLimit(const Request& request) const;
    Response handle(const Request& request);

private:
    Answer dispatch(const Request& request);
    bool isOwnHost(const Request& request) const;

    Policy policy_;
    RateLimiter& requests_;
    Router router_;
};

}  // namespace parvela::service
