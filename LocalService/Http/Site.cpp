#include "Http/Site.h"

#include "Store/Database.h"

#include <ParvelaKit/Text.h>

#include <new>

#include <fmt/format.h>
#include <glib.h>

namespace parvela::service {

namespace {

constexpr std::size_t longestBody = 1U << 20;
constexpr std::size_t longestFile = 25U << 20;

bool changesSomething(const Request& request) {
    return request.method != "GET" && request.method != "HEAD";
}

Response failureResponse(const std::exception& failure) {
    // The request's content stays out of the log.
    g_warning("A request failed: %s", failure.what());
    if (const auto* database = dynamic_cast<const DatabaseError*>(&failure); database && database->isBusy()) {
        return HttpError{503, "Parvela is busy. Try again in a moment.", 1}.response();
    }
    return HttpError{500, "Parvela couldn't carry that out. Is the disk full?"}.response();
}

}  // namespace

bool Site::isOwnHost(const Request& request) const {
    const std::string host = asciiLowercased(request.header("Host").value_or(""));
    for (const char* name : {"localhost", "127.0.0.1", "[::1]"}) {
        if (host == fmt::format("{}:{}", name, policy_.port)) return true;
        if (policy_.port == 80 && host == name) return true;
    }
    return false;
}

std::optional<HttpError> Site::admit(const Request& request) const {
    // A page elsewhere can make its own host name point at this machine. It cannot make the browser say "localhost".
    if (!isOwnHost(request)) return HttpError::forbidden("This host name isn't served here.");
    const auto origin = request.header("Origin");
    if (origin && asciiLowercased(*origin) != "http://" + asciiLowercased(*request.header("Host"))) {
        return HttpError::forbidden("Requests from other sites aren't accepted.");
    }
    if (changesSomething(request) && policy_.checkChange) return policy_.checkChange(request);
    return {};
}

std::size_t Site::bodyLimit(const Request& request) const {
    const auto& path = request.segments;
    const bool upload = request.method == "POST" && path.size() == 4 && path[1] == "tasks" && path[3] == "files";
    return upload ? longestFile : longestBody;
}

Response Site::handle(const Request& request) {
    try {
        const Answer answer = dispatch(request);
        return answer ? *answer : answer.error().response();
    } catch (const std::exception& failure) {
        return failureResponse(failure);
    }
}

Answer Site::dispatch(const Request& request) {
    auto match = router_.find(request);
    if (!match) {
        const bool page = request.method == "GET" || request.method == "HEAD";
        if (match.error().status == 404 && page && policy_.fallback) return policy_.fallback(request);
        return Failure(match.error());
    }
    auto caller = policy_.authenticate(request);
    if (!caller) return Failure(caller.error());

    const std::string who = *caller ? (*caller)->account.id.text() : "nobody";
    if (const auto seconds = requests_.take(who)) return Failure(HttpError::tooMany("Too many requests.", *seconds));

    if (match->access != Access::anyone && !*caller) return Failure(HttpError::unauthorized("Sign in first."));
    // Without a message the client explains it in its own words.
    if (match->access == Access::writer && !(*caller)->canWrite) return Failure(HttpError::forbidden(""));
    Call call{request, std::move(*caller), std::move(match->arguments)};
    Answer answer = (*match->handler)(call);
    // HEAD asks for the beginning of an answer; one that never ends has nothing more to say.
    if (answer && request.method == "HEAD") answer->stream = nullptr;
    return answer;
}

}  // namespace parvela::service
