#include <ParvelaKit/APIError.h>

#include <array>
#include <string_view>

#include <fmt/format.h>

namespace parvela {
namespace {

std::string orElse(const std::string& message, std::string_view fallback) {
    return message.empty() ? std::string(fallback) : message;
}

std::string rateLimitText(std::optional<std::int64_t> seconds) {
    if (!seconds) return "Rate limited — try again in a moment.";
    return fmt::format("Rate limited — try again in {} second{}.", *seconds, *seconds == 1 ? "" : "s");
}

}  // namespace

APIError APIError::rateLimited(std::optional<std::int64_t> seconds) {
    APIError error(Case::rateLimited, {});
    error.retryAfter_ = seconds;
    return error;
}

APIError APIError::server(int status, std::string message) {
    APIError error(Case::server, std::move(message));
    error.status_ = status;
    return error;
}

std::string APIError::message() const {
    switch (kind_) {
        case Case::forbidden:
            return orElse(serverMessage_, "This token can't do that. Use a token with write access.");
        case Case::notFound:
            return orElse(serverMessage_, "Not found.");
        case Case::badRequest:
            return orElse(serverMessage_, "Parvela couldn't accept that request.");
        case Case::rateLimited:
            return rateLimitText(retryAfter_);
        case Case::server:
            return orElse(serverMessage_, fmt::format("Parvela had a problem (HTTP {}). Try again.", status_));
        case Case::missingToken:
            return "Add a personal access token in Settings (create one in Parvela → Settings → API and agents).";
        case Case::unauthorized:
            return "Token invalid or revoked — paste a new one in Settings.";
        case Case::offline:
            return "You're offline, or Parvela can't be reached. Check your connection and the server in Settings.";
        case Case::timedOut:
            return "Parvela took too long to answer. Try again.";
        case Case::invalidResponse:
            return "Parvela sent a response this app doesn't understand. Is the API site URL right?";
        case Case::invalidURL:
            return "The server URL in Settings isn't valid.";
    }
    return {};
}

bool APIError::isUnresolvedReference() const {
    if (kind_ != Case::badRequest) return false;
    constexpr std::array<std::string_view, 4> wordings = {"has no label", "No one called",
                                                          "matches more than one person", "can't see the"};
    for (const std::string_view wording : wordings) {
        if (serverMessage_.contains(wording)) return true;
    }
    return false;
}

bool APIError::isWorthRetrying() const noexcept {
    switch (kind_) {
        case Case::rateLimited:
        case Case::offline:
        case Case::timedOut:
            return true;
        case Case::server:
            return status_ >= 500;
        default:
            return false;
    }
}

}  // namespace parvela
