#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace parvela {

/// Why a call to the service failed. message() is the text that users see, unchanged, wherever the failure shows.
class APIError {
public:
    enum class Case {
        forbidden,
        notFound,
        badRequest,
        rateLimited,
        server,
        missingToken,
        unauthorized,
        offline,
        timedOut,
        invalidResponse,
        invalidURL,
    };

    static APIError forbidden(std::string message) { return {Case::forbidden, std::move(message)}; }
    static APIError notFound(std::string message) { return {Case::notFound, std::move(message)}; }
    static APIError badRequest(std::string message) { return {Case::badRequest, std::move(message)}; }
    static APIError rateLimited(std::optional<std::int64_t> seconds);
    static APIError server(int status, std::string message);
    static APIError missingToken() { return {Case::missingToken, {}}; }
    static APIError unauthorized() { return {Case::unauthorized, {}}; }
    static APIError offline() { return {Case::offline, {}}; }
    static APIError timedOut() { return {Case::timedOut, {}}; }
    static APIError invalidResponse() { return {Case::invalidResponse, {}}; }
    static APIError invalidURL() { return {Case::invalidURL, {}}; }

    Case kind() const noexcept { return kind_; }
    /// What the service said; empty when it said nothing, and for the cases that carry no text.
    const std::string& serverMessage() const noexcept { return serverMessage_; }
    /// The HTTP status of `server`, else 0.
    int status() const noexcept { return status_; }
    /// Seconds to wait before the next try, when `rateLimited` names them; may be zero or negative.
    std::optional<std::int64_t> retryAfter() const noexcept { return retryAfter_; }

    /// The user-facing text.
    std::string message() const;

    /// The service named a label or a person that it cannot resolve.
    bool isUnresolvedReference() const;
    /// The same call may succeed later: the service could not be reached, was busy or had a fault of its own.
    bool isWorthRetrying() const noexcept;

    bool operator==(const APIError&) const = default;

private:
    APIError(Case kind, std::string message) : kind_(kind), serverMessage_(std::move(message)) {}

    Case kind_;
    std::string serverMessage_;
    int status_ = 0;
    std::optional<std::int64_t> retryAfter_;
};

/// How a call ended without an answer: an APIError, or the caller's own cancellation, which is no error and is never
/// shown.
class APIFailure {
public:
    APIFailure(APIError error) : error_(std::move(error)) {}  // NOLINT: every APIError is an APIFailure
    static APIFailure cancelled() { return {}; }

    bool isCancelled() const noexcept { return !error_.has_value(); }
    /// None when cancelled.
    const std::optional<APIError>& error() const noexcept { return error_; }

    bool operator==(const APIFailure&) const = default;

private:
    APIFailure() = default;

    std::optional<APIError> error_;
};

}  // namespace parvela
