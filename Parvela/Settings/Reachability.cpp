#include "Settings/Reachability.h"

#include <optional>
#include <utility>

#include <fmt/format.h>

namespace parvela {

namespace {

using State = Reachability::State;

constexpr std::chrono::seconds patience{10};
constexpr int unauthorized = 401;
constexpr int tooManyRequests = 429;
constexpr int firstFailure = 400;
constexpr int firstServerFault = 500;

Task<Result<HttpResponse, TransportError>> get(Transport transport, Url url, std::stop_token stop) {
    HttpRequest request{.method = "GET", .url = std::move(url), .headers = {}, .body = std::nullopt};
    request.timeout = patience;
    auto sending = transport(std::move(request), std::move(stop));
    auto answer = co_await sending;
    co_return answer;
}

Reachability failure(TransportError error) {
    switch (error) {
        case TransportError::timedOut:
            return {State::failed, "No answer in time. The server may be busy; try again."};
        case TransportError::unreachable:
            return {State::failed, "Can't be reached. Check your connection and the address."};
        case TransportError::badURL:
            return {State::failed, "This address can't be used. Check how it is written."};
        case TransportError::invalidResponse:
            return {State::doubtful, "Something answers, but not as a web server does. Check the address."};
        case TransportError::cancelled:
            return {State::cancelled, {}};
    }
    return {};
}

std::string serverFault(int status) {
    return fmt::format("The server answers, but has a problem (error {}). Try again later.", status);
}

}  // namespace

Task<Reachability> reachWebApp(Transport transport, Url appURL, std::stop_token stop) {
    auto getting = get(std::move(transport), std::move(appURL), std::move(stop));
    const auto answer = co_await getting;
    if (!answer) co_return failure(answer.error());
    if (answer->status >= firstServerFault) co_return Reachability{State::doubtful, serverFault(answer->status)};
    if (answer->status >= firstFailure && answer->status != tooManyRequests) {
        co_return Reachability{
            State::doubtful,
            fmt::format("A server answers, but has no page there (error {}). Check the address.", answer->status)};
    }
    co_return Reachability{State::reached, "Reachable."};
}

Task<Reachability> reachApi(Transport transport, Url apiURL, std::stop_token stop) {
    const auto url = Url::parse(apiURL.text() + "/api/v1/boards");
    if (!url) co_return failure(TransportError::badURL);
    auto getting = get(std::move(transport), *url, std::move(stop));
    const auto answer = co_await getting;
    if (!answer) co_return failure(answer.error());
    if (answer->status >= firstServerFault) co_return Reachability{State::doubtful, serverFault(answer->status)};
    if (answer->status != unauthorized && answer->status != tooManyRequests) {
        co_return Reachability{State::doubtful, "A server answers, but not as Parvela's API does. Check the address."};
    }
    co_return Reachability{State::reached, "Reachable."};
}

}  // namespace parvela
