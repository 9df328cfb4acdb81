#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/ParvelaAPI.h>
#include <ParvelaKit/Text.h>
#include <ParvelaKit/TokenFormat.h>

#include <charconv>
#include <system_error>

#include <fmt/format.h>

namespace parvela {
namespace {

APIFailure failureFor(TransportError error) {
    switch (error) {
        case TransportError::timedOut:
            return APIError::timedOut();
        case TransportError::badURL:
            return APIError::invalidURL();
        case TransportError::invalidResponse:
            return APIError::invalidResponse();
        case TransportError::cancelled:
            return APIFailure::cancelled();
        case TransportError::unreachable:
            break;
    }
    return APIError::offline();
}

APIError errorFor(const HttpResponse& response) {
    const int status = response.status;
    if (status == 401) return APIError::unauthorized();
    if (status == 429) return APIError::rateLimited(ParvelaAPI::retryAfterSeconds(response.header("Retry-After")));

    std::string message = json::decodeErrorMessage(response.body);
    switch (status) {
        case 400:
        case 409:
        case 422:
            return APIError::badRequest(std::move(message));
        case 403:
            return APIError::forbidden(std::move(message));
        case 404:
            return APIError::notFound(std::move(message));
        default:
            return APIError::server(status, std::move(message));
    }
}

}  // namespace

std::string ParvelaAPI::description() const {
    return fmt::format("ParvelaAPI({}, token: {})", baseURL.text(), tokenHint(token));
}

Result<Url, APIError> ParvelaAPI::makeURL(const Endpoint& endpoint) const {
    const auto invalid = Failure(APIError::invalidURL());
    const std::string scheme = baseURL.lowercaseScheme();
    if ((scheme != "https" && scheme != "http") || baseURL.lowercaseHost().empty()) return invalid;

    std::string path = baseURL.path();
    if (path.ends_with('/')) path.pop_back();
    path += "/api/v1";
    for (const std::string& segment : endpoint.path) path += "/" + percentEncode(segment, UrlCharacters::pathSegment);

    const auto query = endpoint.query.empty() ? std::nullopt : std::optional(encodeQuery(endpoint.query));
    auto url = baseURL.withPath(path);
    if (url) url = url->withQuery(query);
    if (url) url = url->withoutFragment();
    if (!url) return invalid;
    return *std::move(url);
}

Result<HttpRequest, APIError> ParvelaAPI::makeRequest(const Endpoint& endpoint) const {
    if (!TokenFormat::isValid(token)) return Failure(APIError::missingToken());
    auto url = makeURL(endpoint);
    if (!url) return Failure(url.error());

    HttpRequest request{.method = endpoint.method,
                        .url = *std::move(url),
                        .headers = {{"Authorization", "Bearer " + token},
                                    {"Accept", "application/json"},
                                    {"User-Agent", "Parvela-macOS/" + std::string(BuildInfo::version())}},
                        .body = endpoint.body,
                        .timeout = std::chrono::seconds(60)};
    if (request.body) request.headers.push_back({"Content-Type", "application/json"});
    return request;
}

Task<Result<std::string, APIFailure>> ParvelaAPI::exchange(Result<HttpRequest, APIError> request, Transport transport,
                                                           std::stop_token stop) {
    if (!request) co_return Failure<APIFailure>(request.error());
    if (stop.stop_requested()) co_return Failure(APIFailure::cancelled());

    auto transfer = transport(*std::move(request), stop);
    auto response = co_await transfer;
    if (!response) co_return Failure(failureFor(response.error()));
    if (response->status < 200 || response->status > 299) co_return Failure<APIFailure>(errorFor(*response));
    co_return std::move(response->body);
}

std::optional<std::int64_t> ParvelaAPI::retryAfterSeconds(std::optional<std::string_view> header) {
    if (!header) return std::nullopt;
    std::string_view text = trimmedBlanks(*header);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    std::int64_t seconds = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, failure] = std::from_chars(text.data(), end, seconds);
    if (failure != std::errc() || stopped != end) return std::nullopt;
    return seconds;
}

}  // namespace parvela
