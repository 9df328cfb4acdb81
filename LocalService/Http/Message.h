#pragma once

#include <ParvelaKit/Result.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

using SoupServerMessage = struct _SoupServerMessage;  // NOLINT(bugprone-reserved-identifier): the library's name

namespace parvela::service {

/// One HTTP request, read whole.
struct Request {
    std::string method;
    std::string path;                   ///< percent-encoded
    std::vector<std::string> segments;  ///< decoded pieces of the path between its slashes
    std::vector<std::pair<std::string, std::string>> query;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    /// The first header of that name, in any case.
    std::optional<std::string> header(std::string_view name) const;
    /// The first query item of that name.
    std::optional<std::string> queryItem(std::string_view name) const;
    std::optional<std::string> cookie(std::string_view name) const;
};

struct Response {
    int status = 200;
    std::string contentType = "application/json";
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
    /// Takes the message over instead: the answer goes on after the handler returned.
    std::function<void(SoupServerMessage*)> stream;

    static Response json(const nlohmann::json& value);
    /// {"ok": true}, for calls with nothing else to say.
    static Response ok();
    static Response redirect(std::string location);
};

/// A refused request: its status and what the person reads.
struct HttpError {
    int status = 500;
    std::string message;
    std::optional<int> retryAfterSeconds;
    std::vector<std::pair<std::string, std::string>> headers;

    Response response() const;

    static HttpError badRequest(std::string message) { return {400, std::move(message)}; }
    static HttpError unauthorized(std::string message) { return {401, std::move(message)}; }
    static HttpError forbidden(std::string message) { return {403, std::move(message)}; }
    static HttpError notFound(std::string message = "Not found.") { return {404, std::move(message)}; }
    static HttpError invalid(std::string message) { return {422, std::move(message)}; }
    static HttpError tooMany(std::string message, int seconds) { return {429, std::move(message), seconds}; }
};

using Answer = Result<Response, HttpError>;

}  // namespace parvela::service
