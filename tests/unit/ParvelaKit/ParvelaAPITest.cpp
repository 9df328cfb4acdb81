#include "support/FakeTransport.h"

#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/ParvelaAPI.h>
#include <ParvelaKit/Records.h>

#include <limits>

namespace parvela {
namespace {

using test::FakeTransport;

constexpr const char* readMe = "GET /api/v1/me";
constexpr const char* revoke = "POST /api/v1/token/revoke";

ParvelaAPI client(std::string_view base, const FakeTransport& script, std::string token = "tk_secret-1") {
    return {*Url::parse(base), std::move(token), script.transport()};
}

std::string urlText(std::string_view base, const Endpoint& endpoint) {
    const auto url = client(base, {}).makeURL(endpoint);
    return url ? url->text() : url.error().message();
}

TEST(ParvelaAPI, placesPathsBelowTheBase) {
    const std::string invalid = APIError::invalidURL().message();
    const struct {
        std::string_view base;
        Endpoint endpoint;
        std::string url;
    } cases[] = {
        {"http://127.0.0.1:3213", Endpoint::me(), "http://127.0.0.1:3213/api/v1/me"},
        {"http://127.0.0.1:3213/", Endpoint::me(), "http://127.0.0.1:3213/api/v1/me"},
        {"https://x.example/x/", Endpoint::task("T-12"), "https://x.example/x/api/v1/tasks/T-12"},
        {"https://x.example/x//", Endpoint::me(), "https://x.example/x//api/v1/me"},
        {"https://x.example/a%20b?old=1#part", Endpoint::me(), "https://x.example/a%20b/api/v1/me"},
        {"https://x.example", Endpoint::taskDetail("a/b?c#d ü;%41"),
         "https://x.example/api/v1/tasks/a%2Fb%3Fc%23d%20%C3%BC%3B%2541/detail"},
        {"https://x.example", Endpoint::tasks({.due = DueFilter::week, .board = "b 1&x=y"}),
         "https://x.example/api/v1/tasks?due=week&board=b%201%26x%3Dy"},
        {"https://[::1]:80", Endpoint::search("ü+", 3), "https://[::1]:80/api/v1/tasks?q=%C3%BC%2B&limit=3"},
        {"HTTP://x.example", Endpoint::me(), "HTTP://x.example/api/v1/me"},
        {"ftp://x.example", Endpoint::me(), invalid},
        {"x.example/path", Endpoint::me(), invalid},
        {"http:///path", Endpoint::me(), invalid},
        {"mailto:a@x.example", Endpoint::me(), invalid},
    };
    for (const auto& test : cases) EXPECT_EQ(urlText(test.base, test.endpoint), test.url) << test.base;
}

std::string headerLines(const HttpRequest& request) {
    std::string lines;
    for (const HttpHeader& header : request.headers) lines += header.name + ": " + header.value + "\n";
    return lines;
}

TEST(ParvelaAPI, finishesRequests) {
    const ParvelaAPI api = client("https://x.example", {});
    const auto read = api.makeRequest(Endpoint::me());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->method, "GET");
    EXPECT_EQ(read->timeout, std::chrono::seconds(60));
    EXPECT_EQ(read->body, std::nullopt);
    EXPECT_EQ(headerLines(*read),
              "Authorization: Bearer tk_secret-1\nAccept: application/json\nUser-Agent: Parvela-macOS/" +
                  std::string(BuildInfo::version()) + "\n");

    const auto written = api.makeRequest(Endpoint::updateTask("k", TaskPatch{.done = true}));
    ASSERT_TRUE(written);
    EXPECT_EQ(written->method, "PATCH");
    EXPECT_EQ(written->body, R"({"done":true})");
    EXPECT_EQ(headerLines(*written), headerLines(*read) + "Content-Type: application/json\n");
}

/// How a call ended, in a word.
template <class T>
std::string ending(const Result<T, APIFailure>& result) {
    if (result) return "value";
    return result.error().isCancelled() ? "cancelled" : result.error().error()->message();
}

TEST(ParvelaAPI, sendsNothingWithoutAToken) {
    for (const char* token : {"", "tk_", "other", "tk_a b"}) {
        FakeTransport script;
        // The token is looked at before the address.
        EXPECT_EQ(ending(client("ftp://x.example", script, token).send<Me>(Endpoint::me()).await_resume()),
                  APIError::missingToken().message())
            << token;
        EXPECT_TRUE(script.requests().empty());
    }
}

TEST(ParvelaAPI, mapsEveryOutcome) {
    const std::string said = R"({"error":{"message":"Said."}})";
    const struct {
        int status;
        std::string body;
        APIError error;
        std::vector<HttpHeader> headers = {};
    } cases[] = {
        {200, "", APIError::invalidResponse()},
        {204, "", APIError::invalidResponse()},
        {200, R"({"ok":1})", APIError::invalidResponse()},
        {200, "<html></html>", APIError::invalidResponse()},
        {400, said, APIError::badRequest("Said.")},
        {401, said, APIError::unauthorized()},
        {403, said, APIError::forbidden("Said.")},
        {403, R"({"error":"plain"})", APIError::forbidden("")},
        {404, said, APIError::notFound("Said.")},
        {409, said, APIError::badRequest("Said.")},
        {422, "", APIError::badRequest("")},
        {429, said, APIError::rateLimited(std::nullopt)},
        {429, "", APIError::rateLimited(30), {{"retry-after", " 30\t"}}},
        {429, "", APIError::rateLimited(std::nullopt), {{"Retry-After", "Fri, 12 Jun 2026 00:00:00 GMT"}}},
        {500, "", APIError::server(500, "")},
        {503, said, APIError::server(503, "Said."), {{"Retry-After", "9"}}},
        {302, "", APIError::server(302, "")},
        {199, said, APIError::server(199, "Said.")},
        {300, "{}", APIError::server(300, "")},
        {418, said, APIError::server(418, "Said.")},
    };
    for (const auto& test : cases) {
        FakeTransport script;
        script.answer(revoke, test.status, test.body, test.headers);
        const auto result =
            client("https://x.example", script).send<OKResponse>(Endpoint::revokeToken()).await_resume();
        ASSERT_FALSE(result) << test.status;
        EXPECT_EQ(result.error(), APIFailure(test.error)) << test.status << " " << ending(result);
    }
    for (const int status : {200, 201, 299}) {
        FakeTransport script;
        script.answer(revoke, status, R"({"ok":true})");
        EXPECT_EQ(ending(client("https://x.example", script).send<OKResponse>(Endpoint::revokeToken()).await_resume()),
                  "value");
    }
}

TEST(ParvelaAPI, mapsTransportFailures) {
    const std::pair<TransportError, APIFailure> cases[] = {
        {TransportError::timedOut, APIError::timedOut()},
        {TransportError::unreachable, APIError::offline()},
        {TransportError::badURL, APIError::invalidURL()},
        {TransportError::invalidResponse, APIError::invalidResponse()},
        {TransportError::cancelled, APIFailure::cancelled()},
    };
    for (const auto& [error, failure] : cases) {
        FakeTransport script;
        script.fail(readMe, error);
        const auto result = client("https://x.example", script).send<Me>(Endpoint::me()).await_resume();
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), failure) << ending(result);
    }
}

TEST(ParvelaAPI, cancellingEndsTheTransferAndIsNoError) {
    FakeTransport script;
    script.hold(readMe);
    std::stop_source stop;
    auto call = client("https://x.example", script).send<Me>(Endpoint::me(), stop.get_token());
    EXPECT_FALSE(call.done());
    stop.request_stop();
    ASSERT_TRUE(call.done());
    EXPECT_EQ(ending(std::move(call).result()), "cancelled");

    EXPECT_EQ(ending(client("https://x.example", script).send<Me>(Endpoint::me(), stop.get_token()).await_resume()),
              "cancelled");
    EXPECT_EQ(script.requests().size(), 1U) << "a call cancelled beforehand sends nothing";
}

TEST(ParvelaAPI, callsOutliveTheClientThatStartedThem) {
    FakeTransport script;
    const auto firstAnswer = script.hold(readMe);
    const auto secondAnswer = script.hold(readMe);
    auto first = client("https://x.example", script).send<ChangedResponse>(Endpoint::me());
    auto second = client("https://y.example", script).send<ChangedResponse>(Endpoint::me());
    secondAnswer.resolve(FakeTransport::ok(R"({"changed":2})"));
    firstAnswer.resolve(FakeTransport::ok(R"({"changed":1})"));
    ASSERT_TRUE(first.done() && second.done());
    EXPECT_EQ(std::move(first).result()->changed, 1);
    EXPECT_EQ(std::move(second).result()->changed, 2);
}

TEST(ParvelaAPI, readsRetryAfterSecondsOnly) {
    const std::pair<const char*, std::int64_t> cases[] = {
        {"1", 1},
        {" 30 ", 30},
        {"+5", 5},
        {"-5", -5},
        {"0", 0},
        {"007", 7},
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
    };
    for (const auto& [header, seconds] : cases) EXPECT_EQ(ParvelaAPI::retryAfterSeconds(header), seconds) << header;
    EXPECT_EQ(ParvelaAPI::retryAfterSeconds(std::nullopt), std::nullopt);
    for (const char* header : {"", " \t", "9223372036854775808", "+", "-", "+-5", "++5", "5s", "5 5", "1.5", "0x10",
                               "\n5", "٣", "Fri, 12 Jun 2026 00:00:00 GMT"}) {
        EXPECT_EQ(ParvelaAPI::retryAfterSeconds(header), std::nullopt) << header;
    }
}

TEST(ParvelaAPI, describesItselfWithoutItsToken) {
    EXPECT_EQ(client("http://127.0.0.1:3213", {}, "tk_abcdefgh").description(),
              "ParvelaAPI(http://127.0.0.1:3213, token: tk_ab…)");
    EXPECT_EQ(client("https://x.example", {}, "").description(), "ParvelaAPI(https://x.example, token: none)");
}

}  // namespace
}  // namespace parvela
