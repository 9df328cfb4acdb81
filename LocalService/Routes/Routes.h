#pragma once

#include "Http/EventStream.h"
#include "Http/RateLimiter.h"
#include "Http/Router.h"
#include "Routes/Backend.h"

/// Each function enters one group of calls into a site's routing table. What is passed by reference must outlive the
/// router.
namespace parvela::service {

/// Makes a route's handler of a function that takes the backend and the call.
inline auto bindTo(Backend& backend) {
    return [&backend](Answer (*function)(Backend&, Call&)) {
        return [&backend, function](Call& call) { return function(backend, call); };
    };
}

/// The published API under /api/v1, the same on both sites.
void addApiRoutes(Router& router, Backend& backend);

// The web app's own calls.
void addBoardRoutes(Router& router, Backend& backend);
void addFileRoutes(Router& router, Backend& backend);
void addTaskRoutes(Router& router, Backend& backend);
void addTokenRoutes(Router& router, Backend& backend);

/// Signing in, up and out, the hand-over from the browser to the desktop, and the event stream that a session holds
/// open.
class SessionRoutes {
public:
    SessionRoutes(Backend& backend, EventStream& events, RateLimiter& failedSignIns, std::string cookieName)
        : backend_(backend), events_(events), failedSignIns_(failedSignIns), cookieName_(std::move(cookieName)) {}

    void addTo(Router& router);
    /// The signed-in person of a request's session cookie.
    std::optional<Caller> caller(const Request& request);

private:
    Answer describe(Call& call);
    Answer signIn(Call& call);
    Answer signInDemo(Call& call);
    Answer signUp(Call& call);
    Answer signOut(Call& call);
    Answer completeHandoff(Call& call);
    Response session(const Account& account) const;
    std::string sessionCookie(const std::string& secret) const;

    Backend& backend_;
    EventStream& events_;
    RateLimiter& failedSignIns_;
    std::string cookieName_;
};

/// Where a sign-in of the API site starts: it sends the browser to the web app's sign-in page.
void addSignInProvider(Router& router, Backend& backend);

}  // namespace parvela::service
