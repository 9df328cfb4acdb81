#include "Domain/Demo.h"
#include "Routes/BodyReader.h"
#include "Routes/Routes.h"

#include <ParvelaKit/Text.h>
#include <ParvelaKit/Url.h>

#include <fmt/format.h>

namespace parvela::service {

namespace {

constexpr Text personNameText = Text::line(100);
constexpr Text emailText = Text::line(254);
constexpr std::size_t shortestPassword = 8;
constexpr std::size_t longestPassword = 200;
constexpr int sessionSeconds = 30 * 24 * 60 * 60;

/// One "@" with something on both sides is all that can be said without sending mail.
bool looksLikeEmail(std::string_view text) {
    const auto at = text.find('@');
    return at != std::string_view::npos && at > 0 && at + 1 < text.size() && text.find('@', at + 1) == text.npos &&
           !text.contains(' ');
}

/// Passwords keep their blanks, so they are not read like other texts.
std::string readPassword(BodyReader& body) {
    const auto text = body.optional("password", Text::block(longestPassword));
    return text.value_or("");
}

std::optional<std::string> readTimeZone(BodyReader& body) {
    auto zone = body.optional("time_zone", Text::line(64));
    if (zone && !Zone::named(*zone)) zone.reset();
    return zone;
}

}  // namespace

void SessionRoutes::addTo(Router& router) {
    const auto bound = [this](Answer (SessionRoutes::*function)(Call&)) {
        return [this, function](Call& call) { return (this->*function)(call); };
    };
    using enum Access;
    router.add("GET", "/api/session", anyone, bound(&SessionRoutes::describe));
    router.add("POST", "/api/session", anyone, bound(&SessionRoutes::signIn));
    router.add("POST", "/api/session/demo", anyone, bound(&SessionRoutes::signInDemo));
    router.add("DELETE", "/api/session", anyone, bound(&SessionRoutes::signOut));
    router.add("POST", "/api/accounts", anyone, bound(&SessionRoutes::signUp));
    router.add("PATCH", "/api/account", writer, [this](Call& call) -> Answer {
        BodyReader body(call.request);
        const auto zone = body.optional("time_zone", Text::line(64));
        if (zone && !Zone::named(*zone)) body.fail(HttpError::invalid("This time zone isn't known."));
        if (body.error()) return Failure(*body.error());
        if (body.has("time_zone")) backend_.stores.accounts.setTimeZone(call.person().id, zone);
        return session(*backend_.stores.accounts.find(call.person().id));
    });
    router.add("POST", "/api/handoff", writer, [this](Call& call) -> Answer {
        const std::string code = backend_.stores.accounts.issueHandoffCode(call.person().id);
        return Response::json({{"url", "parvela://auth-callback?code=" + code}});
    });
    router.add("GET", "/oauth/complete", anyone, bound(&SessionRoutes::completeHandoff));
    router.add("GET", "/api/events", reader, [this](Call& call) -> Answer {
        return events_.open(call.person().id, secretHash(call.request.cookie(cookieName_).value_or("")));
    });
}

std::optional<Caller> SessionRoutes::caller(const Request& request) {
    const auto secret = request.cookie(cookieName_);
    if (!secret) return {};
    auto account = backend_.stores.accounts.sessionAccount(*secret);
    if (!account) return {};
    return Caller{.account = std::move(*account)};
}

std::string SessionRoutes::sessionCookie(const std::string& secret) const {
    return fmt::format("{}={}; Path=/; HttpOnly; SameSite=Lax; Max-Age={}", cookieName_, secret,
                       secret.empty() ? 0 : sessionSeconds);
}

Response SessionRoutes::session(const Account& account) const {
    const auto workspace = backend_.stores.accounts.workspace();
    return Response::json({{"me",
                            {{"id", account.id.text()},
                             {"name", account.name},
                             {"email", account.email},
                             {"color", account.color},
                             {"avatar", nullptr},
                             {"time_zone", account.timeZone ? nlohmann::json(*account.timeZone) : nullptr}}},
                           {"workspace",
                            {{"id", workspace ? workspace->id.text() : ""},
                             {"name", workspace ? workspace->name : ""},
                             {"role", account.role}}},
                           {"today", backend_.today(account).text()},
                           {"api_base", backend_.settings.apiOrigin},
                           {"demo", backend_.settings.demo}});
}

Answer SessionRoutes::describe(Call& call) {
    if (call.caller) return session(call.person());
    nlohmann::json body = {{"api_base", backend_.settings.apiOrigin},
                           {"demo", backend_.settings.demo},
                           {"has_users", !backend_.stores.accounts.isEmpty()},
                           {"sign_up", backend_.settings.openSignUp || backend_.stores.accounts.isEmpty()}};
    if (backend_.settings.demo) body["demo_email"] = demo::demoEmail;
    Response response = Response::json(body);
    response.status = 401;
    return response;
}

Answer SessionRoutes::signIn(Call& call) {
    BodyReader body(call.request);
    const std::string email = body.required("email", emailText);
    const std::string password = readPassword(body);
    if (body.error()) return Failure(*body.error());

    const std::string bucket = asciiLowercased(email);
    if (const auto seconds = failedSignIns_.wait(bucket)) {
        return Failure(HttpError::tooMany("Too many failed sign-ins. Try again later.", *seconds));
    }
    const auto account = backend_.stores.accounts.findByEmail(email);
    bool right = false;
    if (account) {
        right = backend_.passwords.verify(password, backend_.stores.accounts.passwordHash(account->id));
    } else {
        backend_.passwords.verifyNobody(password);
    }
    if (!right) {
        failedSignIns_.take(bucket);
        return Failure(HttpError::unauthorized("The e-mail address or the password is wrong."));
    }
    failedSignIns_.forget(bucket);
    Response response = session(*account);
    response.headers.emplace_back("Set-Cookie", sessionCookie(backend_.stores.accounts.openSession(account->id)));
    return response;
}

Answer SessionRoutes::signInDemo(Call&) {
    const auto account = backend_.settings.demo ? backend_.stores.accounts.findByEmail(demo::demoEmail) : std::nullopt;
    if (!account) return Failure(HttpError::notFound("This service has no demo person."));
    Response response = session(*account);
    response.headers.emplace_back("Set-Cookie", sessionCookie(backend_.stores.accounts.openSession(account->id)));
    return response;
}

Answer SessionRoutes::signUp(Call& call) {
    auto& accounts = backend_.stores.accounts;
    const bool first = accounts.isEmpty();
    // The owner adds people; others join by themselves only where that is wanted.
    const bool addedByOwner = call.caller && call.person().isOwner();
    if (!first && !addedByOwner && !backend_.settings.openSignUp) {
        return Failure(HttpError::forbidden("This workspace is closed. Ask its owner to add you."));
    }
    BodyReader body(call.request);
    const std::string name = body.required("name", personNameText);
    const std::string email = body.required("email", emailText);
    const std::string password = readPassword(body);
    const std::string workspace = body.optional("workspace", personNameText).value_or("");
    const auto timeZone = readTimeZone(body);
    if (!looksLikeEmail(email)) body.fail(HttpError::invalid("This doesn't look like an e-mail address."));
    if (characterCount(password) < shortestPassword) {
        body.fail(HttpError::invalid(fmt::format("The password needs at least {} characters.", shortestPassword)));
    }
    if (body.error()) return Failure(*body.error());
    if (accounts.findByEmail(email))
        return Failure(HttpError{409, "There is an account with this e-mail address already."});

    Transaction transaction(backend_.stores.database);
    if (!accounts.workspace()) accounts.createWorkspace(workspace.empty() ? name + "'s workspace" : workspace);
    const PersonId id = accounts.create({.name = name,
                                         .email = email,
                                         .passwordHash = backend_.passwords.hash(password),
                                         .role = first ? "owner" : "member",
                                         .timeZone = timeZone});
    if (addedByOwner) {
        transaction.commit();
        return Response::json({{"person", {{"id", id.text()}, {"name", name}, {"email", email}}}});
    }
    const std::string secret = accounts.openSession(id);
    transaction.commit();
    Response response = session(*accounts.find(id));
    response.headers.emplace_back("Set-Cookie", sessionCookie(secret));
    return response;
}

Answer SessionRoutes::signOut(Call& call) {
    if (const auto secret = call.request.cookie(cookieName_)) {
        backend_.stores.accounts.closeSession(*secret);
        events_.closeSession(secretHash(*secret));
    }
    Response response = Response::ok();
    response.headers.emplace_back("Set-Cookie", sessionCookie(""));
    return response;
}

Answer SessionRoutes::completeHandoff(Call& call) {
    const auto person = backend_.stores.accounts.redeemHandoffCode(call.request.queryItem("code").value_or(""));
    // A code that is used up or too old leads to the ordinary way in.
    if (!person) return Response::redirect("/sign-in");
    Response response = Response::redirect("/home");
    response.headers.emplace_back("Set-Cookie", sessionCookie(backend_.stores.accounts.openSession(*person)));
    return response;
}

void addSignInProvider(Router& router, Backend& backend) {
    router.add("GET", "/api/auth/signin/{}", Access::anyone, [&backend](Call& call) -> Answer {
        const std::string self = backend.settings.apiOrigin + call.request.path;
        const std::string state =
            percentEncode(call.request.queryItem("state").value_or(""), UrlCharacters::alphanumerics);
        return Response::redirect(backend.settings.webOrigin + "/oauth/start?u=" +
                                  percentEncode(self + "?state=" + state, UrlCharacters::alphanumerics));
    });
}

}  // namespace parvela::service
