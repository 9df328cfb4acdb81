#pragma once

#include <ParvelaKit/APIError.h>
#include <ParvelaKit/Endpoint.h>
#include <ParvelaKit/Json/Decoder.h>
#include <ParvelaKit/Result.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Transport.h>

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>

namespace parvela {

/// The client of the service's HTTP API: one immutable value for one API site and token. Make a new one when either
/// changes.
///
/// It never retries by itself and keeps no state; calls may run side by side.
struct ParvelaAPI {
    Url baseURL;  ///< the API site; paths are appended below its own
    std::string token;
    Transport transport;

    /// For logs and debuggers; shows the token's hint only.
    std::string description() const;

    /// Fails with `invalidURL` unless the base URL is http or https with a host.
    Result<Url, APIError> makeURL(const Endpoint& endpoint) const;
    /// Fails with `missingToken` when the token has not the form of one, or as makeURL does.
    Result<HttpRequest, APIError> makeRequest(const Endpoint& endpoint) const;

    /// Performs the call and decodes its answer as `T`. Ends early, as cancelled, when `stop` is triggered. The call
    /// needs nothing of this value once it has started.
    template <json::Record T>
    Task<Result<T, APIFailure>> send(const Endpoint& endpoint, std::stop_token stop = {}) const {
        return decoded<T>(exchange(makeRequest(endpoint), transport, std::move(stop)));
    }

    /// The seconds of a Retry-After header: a whole number, not a date (RFC 9110, section 10.2.3, allows both).
    static std::optional<std::int64_t> retryAfterSeconds(std::optional<std::string_view> header);

private:
    static Task<Result<std::string, APIFailure>> exchange(Result<HttpRequest, APIError> request, Transport transport,
                                                          std::stop_token stop);

    template <json::Record T>
    static Task<Result<T, APIFailure>> decoded(Task<Result<std::string, APIFailure>> exchange) {
        auto body = co_await exchange;
        if (!body) co_return Failure<APIFailure>(std::move(body.error()));
        auto record = json::decode<T>(*body);
        if (!record) co_return Failure<APIFailure>(APIError::invalidResponse());
        co_return std::move(*record);
    }
};

}  // namespace parvela
