#include <ParvelaKit/APIError.h>

namespace parvela {
namespace {

TEST(APIError, saysWhatUsersAreToldWordForWord) {
    const std::pair<APIError, const char*> cases[] = {
        {APIError::forbidden(""), "This token can't do that. Use a token with write access."},
        {APIError::forbidden("Ask an owner."), "Ask an owner."},
        {APIError::notFound(""), "Not found."},
        {APIError::notFound("No task TSK-9."), "No task TSK-9."},
        {APIError::badRequest(""), "Parvela couldn't accept that request."},
        {APIError::badRequest(" "), " "},
        {APIError::rateLimited(std::nullopt), "Rate limited \u2014 try again in a moment."},
        {APIError::rateLimited(1), "Rate limited \u2014 try again in 1 second."},
        {APIError::rateLimited(30), "Rate limited \u2014 try again in 30 seconds."},
        {APIError::rateLimited(0), "Rate limited \u2014 try again in 0 seconds."},
        {APIError::rateLimited(-1), "Rate limited \u2014 try again in -1 seconds."},
        {APIError::server(500, ""), "Parvela had a problem (HTTP 500). Try again."},
        {APIError::server(503, "Down for repairs."), "Down for repairs."},
        {APIError::missingToken(),
         "Add a personal access token in Settings (create one in Parvela \u2192 Settings \u2192 API and agents)."},
        {APIError::unauthorized(), "Token invalid or revoked \u2014 paste a new one in Settings."},
        {APIError::offline(),
         "You're offline, or Parvela can't be reached. Check your connection and the server in Settings."},
        {APIError::timedOut(), "Parvela took too long to answer. Try again."},
        {APIError::invalidResponse(),
         "Parvela sent a response this app doesn't understand. Is the API site URL right?"},
        {APIError::invalidURL(), "The server URL in Settings isn't valid."},
    };
    for (const auto& [error, message] : cases) EXPECT_EQ(error.message(), message);
}

TEST(APIError, knowsTheWordingsOfAnUnresolvedReference) {
    const std::pair<APIError, bool> cases[] = {
        {APIError::badRequest("The board has no label \"ux\"."), true},
        {APIError::badRequest("No one called Zed."), true},
        {APIError::badRequest("\"Al\" matches more than one person."), true},
        {APIError::badRequest("Robin can't see the board."), true},
        {APIError::badRequest("no one called Zed."), false},
        {APIError::badRequest(""), false},
        {APIError::notFound("The board has no label."), false},
        {APIError::server(500, "has no label"), false},
    };
    for (const auto& [error, unresolved] : cases)
        EXPECT_EQ(error.isUnresolvedReference(), unresolved) << error.message();
}

TEST(APIError, knowsWhatALaterTryMayCure) {
    for (const APIError& error : {APIError::rateLimited(3), APIError::server(500, ""), APIError::server(503, "x"),
                                  APIError::offline(), APIError::timedOut()}) {
        EXPECT_TRUE(error.isWorthRetrying()) << error.message();
    }
    for (const APIError& error : {APIError::forbidden(""), APIError::notFound(""), APIError::badRequest(""),
                                  APIError::server(302, ""), APIError::server(418, ""), APIError::missingToken(),
                                  APIError::unauthorized(), APIError::invalidResponse(), APIError::invalidURL()}) {
        EXPECT_FALSE(error.isWorthRetrying()) << error.message();
    }
}

}  // namespace
}  // namespace parvela
