#pragma once

#include <ParvelaKit/Result.h>
#include <ParvelaKit/Task.h>
#include <ParvelaKit/Url.h>

#include <chrono>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace parvela {

struct HttpHeader {
    std::string name;
    std::string value;
    bool operator==(const HttpHeader&) const = default;
};

/// A finished HTTP request. Never cached; no cookies are sent or kept.
struct HttpRequest {
    std::string method;
    Url url;
    std::vector<HttpHeader> headers;
    std::optional<std::string> body;
    std::chrono::seconds timeout{60};
};

struct HttpResponse {
    int status = 0;
    std::vector<HttpHeader> headers;
    std::string body;

    /// The first header of that name (names compare without regard to case), or none.
    std::optional<std::string> header(std::string_view name) const;
};

/// Why a transfer gave no HTTP response.
enum class TransportError {
    timedOut,
    unreachable,      ///< offline, no such host, refused, connection lost, TLS failure
    badURL,           ///< malformed or unsupported URL
    invalidResponse,  ///< something answered, but not with one whole HTTP response
    cancelled,        ///< the stop token was triggered
};

/// Performs one request. Must resolve in bounded time and answer TransportError::cancelled soon after a stop request.
using Transport = std::function<Task<Result<HttpResponse, TransportError>>(HttpRequest, std::stop_token)>;

}  // namespace parvela
