#include "Settings/Reachability.h"
#include "Settings/ServerForm.h"
#include "support/FakeTransport.h"
#include "support/MemoryStore.h"

namespace parvela {
namespace {

using Mode = ServerConfig::Mode;
using Verdict = AddressCheck::Verdict;
using testing::HasSubstr;

TEST(AddressCheckTest, saysWhatIsWrongWithAnAddress) {
    const struct {
        const char* typed;
        Verdict verdict;
        const char* says;
    } cases[] = {
        {"", Verdict::empty, ""},
        {" \t", Verdict::empty, ""},
        {"https://board.example", Verdict::usable, ""},
        {" https://board.example// ", Verdict::usable, ""},
        {"board.example/team", Verdict::usable, "Used as https://board.example/team."},
        {"http://localhost:3100", Verdict::usable, ""},
        {"http://board.example", Verdict::exposed, "Use https://"},
        {"ftp://board.example", Verdict::invalid, "start with https:// or http://"},
        {"javascript://x", Verdict::invalid, "start with https:// or http://"},
        {"https://", Verdict::invalid, "server's name"},
        {"https://board.example/?a=1", Verdict::invalid, "Leave out the “?”"},
        {"https://board.example#top", Verdict::invalid, "Leave out the “#”"},
        {"my board.example", Verdict::invalid, "no spaces"},
        {"https://board.example:99999", Verdict::invalid, "looks like"},
        {"https://bücher.example", Verdict::invalid, "looks like"},
    };
    for (const auto& [typed, verdict, says] : cases) {
        const auto check = checkAddress(typed);
        EXPECT_EQ(check.verdict, verdict) << typed;
        EXPECT_THAT(check.message, HasSubstr(says)) << typed;
        EXPECT_EQ(check.message.empty(), std::string_view(says).empty()) << typed;
    }
}

class ServerFormTest : public testing::Test {
protected:
    std::shared_ptr<test::MemoryStore> store = std::make_shared<test::MemoryStore>();
    Preferences preferences{store};
};

TEST_F(ServerFormTest, anInvalidAddressIsKeptButNotUsed) {
    preferences.setServerMode(Mode::custom);
    preferences.setCustomAppURL("https://board.example");
    const auto before = ServerConfig::current(preferences);

    ServerForm form(preferences);
    form.setAppURL("https://board.example/?x");
    EXPECT_FALSE(form.isUsable());
    EXPECT_EQ(form.apply(), std::nullopt);
    EXPECT_EQ(ServerConfig::current(preferences), before);
    EXPECT_EQ(ServerForm(preferences).appURL(), "https://board.example/?x");  // also after the next launch

    form.setAppURL("https://other.example");
    ASSERT_TRUE(form.isChanged());
    EXPECT_EQ(form.apply()->appURL.text(), "https://other.example");
    EXPECT_FALSE(form.isChanged());
    EXPECT_EQ(ServerForm(preferences).appURL(), "https://other.example");
}

TEST_F(ServerFormTest, choosingCustomWaitsForAnAddress) {
    ServerForm form(preferences);
    form.setMode(Mode::custom);
    EXPECT_EQ(form.apply(), std::nullopt);
    EXPECT_EQ(preferences.serverMode(), Mode::production);

    form.setAppURL("board.example");
    const auto config = form.apply();
    ASSERT_TRUE(config);
    EXPECT_EQ(config->mode, Mode::custom);
    EXPECT_EQ(config->appURL.text(), "https://board.example");
    EXPECT_EQ(config->apiURL, ServerConfig::production().apiURL);
    EXPECT_EQ(preferences.customAppURL(), "board.example");  // as it was typed
    EXPECT_EQ(preferences.customApiURL(), std::nullopt);
}

TEST_F(ServerFormTest, presetsNeedNoAddressAndKeepTheTypedOnes) {
    ServerForm form(preferences);
    form.setAppURL("ftp://nowhere");
    form.setMode(Mode::local);
    EXPECT_EQ(form.apply(), ServerConfig::local());
    EXPECT_FALSE(form.isChanged());
    EXPECT_EQ(ServerForm(preferences).appURL(), "ftp://nowhere");
}

TEST_F(ServerFormTest, theApiSiteOfALinkComesFirstAndTheTypedOneStays) {
    preferences.setLinkedApi("https://board.example", "https://linked.example");
    ServerForm form(preferences);
    form.setMode(Mode::custom);
    form.setAppURL("https://board.example");
    form.setApiURL("https://typed.example");
    EXPECT_EQ(form.apply()->apiURL.text(), "https://linked.example");
    // Whoever stores a configuration stores the address in force.
    preferences.setCustomApiURL("https://linked.example");
    form.keepTyped();
    EXPECT_EQ(preferences.customApiURL(), "https://typed.example");
}

TEST(ReachabilityTest, tellsApartWhatAnswers) {
    using State = Reachability::State;
    const struct {
        int status;
        State page;
        State api;
    } cases[] = {
        {200, State::reached, State::doubtful}, {302, State::reached, State::doubtful},
        {401, State::doubtful, State::reached}, {404, State::doubtful, State::doubtful},
        {429, State::reached, State::reached},  {503, State::doubtful, State::doubtful},
    };
    const Url site = *Url::parse("https://board.example");
    for (const auto& [status, page, api] : cases) {
        test::FakeTransport network;
        network.answer("GET ", status);
        network.answer("GET /api/v1/boards", status);
        EXPECT_EQ(reachWebApp(network.transport(), site, {}).result().state, page) << status;
        EXPECT_EQ(reachApi(network.transport(), site, {}).result().state, api) << status;
        for (const HttpRequest& request : network.requests()) EXPECT_TRUE(request.headers.empty());  // no token
    }
    test::FakeTransport network;
    network.fail("GET ", TransportError::unreachable);
    EXPECT_EQ(reachWebApp(network.transport(), site, {}).result().state, State::failed);
    network.fail("GET ", TransportError::cancelled);
    EXPECT_EQ(reachWebApp(network.transport(), site, {}).result().message, "");
}

}  // namespace
}  // namespace parvela
