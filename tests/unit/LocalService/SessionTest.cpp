#include "Domain/Demo.h"
#include "ServiceFixture.h"

namespace parvela::service {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class SessionTest : public test::ServiceTest {
protected:
    test::Browser window() { return test::Browser(service->webOrigin()); }
    static nlohmann::json account(const char* email, const char* password = "correct horse") {
        return {{"name", "Robin Hale"}, {"email", email}, {"password", password}};
    }
};

TEST_F(SessionTest, theFirstPersonOwnsTheWorkspace) {
    auto robin = window();
    auto before = robin.get("/api/session");
    EXPECT_EQ(before.status, 401);
    EXPECT_EQ(nlohmann::json::parse(before.body).at("has_users"), false);
    auto body = account("robin@example.org");
    body["workspace"] = "Harbour";
    const auto session = robin.call("POST", "/api/accounts", body);
    EXPECT_EQ(session.at("workspace").at("name"), "Harbour");
    EXPECT_EQ(session.at("workspace").at("role"), "owner");
    EXPECT_EQ(robin.fetch("/api/session").at("me").at("email"), "robin@example.org");
    auto rosa = join("Rosa Diaz");
    EXPECT_EQ(rosa.fetch("/api/session").at("workspace").at("role"), "member");
    EXPECT_EQ(rosa.fetch("/api/session").at("workspace").at("name"), "Harbour");
}

TEST_F(SessionTest, aClosedWorkspaceGrowsByItsOwnerOnly) {
    auto robin = join("Robin Hale");
    service->backend().settings.openSignUp = false;
    auto stranger = window();
    EXPECT_EQ(stranger.status("POST", "/api/accounts", account("x@example.org")), 403);
    EXPECT_EQ(nlohmann::json::parse(stranger.get("/api/session").body).at("sign_up"), false);
    const std::string before = robin.cookie;
    EXPECT_EQ(robin.call("POST", "/api/accounts", account("new@example.org")).at("person").at("email"),
              "new@example.org");
    EXPECT_EQ(robin.cookie, before);
    auto added = window();
    added.call("POST", "/api/session", {{"email", "new@example.org"}, {"password", "correct horse"}});
    EXPECT_EQ(added.status("POST", "/api/accounts", account("third@example.org")), 403);  // members do not add people
}

TEST_F(SessionTest, signUpsAreChecked) {
    join("Robin Hale");
    auto browser = window();
    EXPECT_EQ(browser.status("POST", "/api/accounts", account("ROBIN@example.org")), 409);
    for (const char* email : {"", "robin", "@example.org", "robin@", "a b@example.org", "a@b@c"}) {
        EXPECT_EQ(browser.status("POST", "/api/accounts", account(email)), 422) << email;
    }
    EXPECT_EQ(browser.status("POST", "/api/accounts", account("new@example.org", "short")), 422);
    EXPECT_EQ(browser.status("POST", "/api/accounts", account("new@example.org", std::string(201, 'x').c_str())), 422);
    EXPECT_TRUE(browser.cookie.empty());
}

TEST_F(SessionTest, cookiesProveThePersonUntilTheyEnd) {
    auto robin = join("Robin Hale");
    auto second = window();
    const auto answer =
        second.send("POST", "/api/session", R"({"email":"ROBIN@EXAMPLE.ORG","password":"correct horse"})");
    EXPECT_THAT(answer.header("Set-Cookie").value_or(""), HasSubstr("; HttpOnly; SameSite=Lax"));
    EXPECT_NE(second.cookie, robin.cookie);
    const std::string kept = second.cookie;
    second.call("DELETE", "/api/session");
    EXPECT_TRUE(second.cookie.empty());
    second.cookie = kept;
    EXPECT_EQ(second.status("GET", "/api/v1/me"), 401);  // ended on the server too

    auto forged = window();
    for (const std::string& cookie :
         {std::string("parvela_session=x"), robin.cookie + "x", robin.cookie.substr(0, robin.cookie.size() - 1)}) {
        forged.cookie = cookie;
        EXPECT_EQ(forged.status("GET", "/api/v1/me"), 401) << cookie;
    }
    // In use it lasts; unused it ends after thirty days.
    for (int day = 0; day < 40; ++day) {
        clock.advance(24h);
        ASSERT_EQ(robin.status("GET", "/api/v1/me"), 200) << "day " << day;
    }
    clock.advance(24h * 31);
    EXPECT_EQ(robin.status("GET", "/api/v1/me"), 401);
}

TEST_F(SessionTest, guessingPasswordsSoonHasToWait) {
    auto robin = join("Robin Hale");
    auto rosa = join("Rosa Diaz");
    auto guesser = window();
    const auto guess = [&](const char* email, const char* password) {
        return guesser.send("POST", "/api/session", nlohmann::json{{"email", email}, {"password", password}}.dump());
    };
    for (int i = 0; i < 5; ++i) EXPECT_EQ(guess("robin@example.org", "wrong").status, 401);
    const auto refused = guess("Robin@Example.org", "correct horse");
    EXPECT_EQ(refused.status, 429);
    EXPECT_EQ(refused.header("Retry-After"), "60");
    EXPECT_EQ(guess("rosa@example.org", "correct horse").status, 200);
    clock.advance(60s);
    EXPECT_EQ(guess("robin@example.org", "correct horse").status, 200);
    // An address without an account looks the same.
    EXPECT_EQ(guess("nobody@example.org", "wrong").body, guess("robin@example.org", "wrong").body);
}

TEST_F(SessionTest, theBrowserHandsItsSessionOverOnce) {
    auto robin = join("Robin Hale");
    const auto codeOf = [&] {
        const std::string url = robin.call("POST", "/api/handoff").at("url");
        EXPECT_THAT(url, StartsWith("parvela://auth-callback?code="));
        return url.substr(url.find('=') + 1);
    };
    const std::string code = codeOf();
    auto waiting = window();
    EXPECT_EQ(waiting.status("POST", "/api/handoff"), 401);
    const auto done = waiting.get("/oauth/complete?code=" + code);
    EXPECT_EQ(done.status, 302);
    EXPECT_EQ(done.header("Location"), "/home");
    EXPECT_EQ(waiting.fetch("/api/session").at("me").at("name"), "Robin Hale");

    const std::string late = codeOf();
    clock.advance(2min);
    for (const std::string& bad : {code, late, std::string("x"), std::string()}) {
        auto other = window();
        EXPECT_EQ(other.get("/oauth/complete?code=" + bad).header("Location"), "/sign-in") << bad;
        EXPECT_TRUE(other.cookie.empty());
    }
    // The API site's provider leads to the web app's sign-in page, with its own address inside one value.
    test::Browser api(service->apiOrigin());
    const auto provider = api.get("/api/auth/signin/local?state=a%26b");
    EXPECT_EQ(provider.status, 302);
    const Url start = Url::parse(provider.header("Location").value_or("")).value();
    EXPECT_EQ(start.path(), "/oauth/start");
    EXPECT_EQ(decodeQuery(*start.query())->at(0).value, service->apiOrigin() + "/api/auth/signin/local?state=a%26b");
}

TEST_F(SessionTest, theDemoIsReadyAndOnlyWhereItIsWanted) {
    EXPECT_EQ(window().status("POST", "/api/session/demo"), 404);
    start({.demo = true});
    auto visitor = window();
    const auto before = nlohmann::json::parse(visitor.get("/api/session").body);
    EXPECT_EQ(before.at("demo"), true);
    EXPECT_EQ(before.at("demo_email"), demo::demoEmail);
    visitor.call("POST", "/api/session/demo");
    const auto api = client(visitor);
    const auto home = answer<HomeData>(api, Endpoint::home());
    EXPECT_GT(home.counts.overdue, 0);
    EXPECT_GT(home.counts.today, 0);
    EXPECT_GT(home.counts.doneToday, 0);
    EXPECT_GT(home.unread, 0);
    EXPECT_GE(home.boards.size(), 3U);
    auto password = window();
    EXPECT_EQ(password.status("POST", "/api/session", {{"email", demo::demoEmail}, {"password", demo::demoPassword}}),
              200);
    // A second start finds people and leaves everything as it is.
    auto& backend = service->backend();
    demo::seed(backend.stores, backend.actions, backend.passwords, clock, clock.today());
    EXPECT_EQ(answer<HomeData>(api, Endpoint::home()), home);
}

TEST_F(SessionTest, linkingADeviceReplacesItsToken) {
    auto robin = join("Robin Hale");
    const auto link = [&](const char* device) {
        return robin.call("POST", "/api/v1-link", {{"device_id", device}, {"device_name", "Desk"}});
    };
    const auto first = link("A");
    EXPECT_EQ(first.at("api_base"), service->apiOrigin());
    EXPECT_EQ(first.at("user_name"), "Robin Hale");
    EXPECT_THAT(first.at("token").get<std::string>(), ::testing::MatchesRegex("tk_[A-Za-z0-9]+"));
    EXPECT_EQ(first.at("token").get<std::string>().size(), 43U);
    link("B");
    const auto again = link("A");
    EXPECT_EQ(robin.fetch("/api/tokens").at("tokens").size(), 2U);
    ParvelaAPI api{
        .baseURL = Url::parse(service->apiOrigin()).value(), .token = first.at("token"), .transport = SoupTransport()};
    EXPECT_FALSE(ask<Me>(api, Endpoint::me()).has_value());
    api.token = again.at("token");
    EXPECT_EQ(answer<Me>(api, Endpoint::me()).email, "robin@example.org");
}

}  // namespace
}  // namespace parvela::service
