#include "support/LinkedDevice.h"

namespace parvela {
namespace {

Url url(std::string_view text) {
    return Url::parse(text).value();
}

class ParvelaSessionTest : public testing::Test, protected test::LinkedDevice {
protected:
    ParvelaSessionTest() {
        unlink();
        store->set("serverMode", std::string("custom"));
        store->set("customAppURL", std::string("https://app.test:8443"));
        store->set("customAPIURL", std::string("https://typed.test"));
    }

    static BridgeMessage::Link linkWith(std::string token = "tk_device", std::string_view base = "https://api.test") {
        return {std::move(token), url(base), "w1", "Workspace", std::nullopt};
    }
    std::string tokenOf(const std::string& account) {
        const auto found = secrets->secrets.find("app.parvela.token " + account);
        return found == secrets->secrets.end() ? "none" : found->second;
    }

    ParvelaSession session = LinkedDevice::session();
};

TEST_F(ParvelaSessionTest, aLinkBringsItsTokenItsRecordAndItsApiSite) {
    ASSERT_TRUE(session.adoptLink(linkWith(), url("https://APP.test:8443/deep?x")).result());
    EXPECT_EQ(session.linkInfo(), (LinkInfo{url("https://api.test"), "w1", "Workspace", std::nullopt, clock->now()}));
    EXPECT_EQ(session.server().apiURL.text(), "https://api.test");
    EXPECT_EQ(tokenOf("api.test"), "tk_device");
    const auto api = session.client().result();
    ASSERT_TRUE(api);
    EXPECT_EQ(api->token, "tk_device");
    EXPECT_EQ(api->baseURL.text(), "https://api.test");
}

TEST_F(ParvelaSessionTest, aPageOfAnotherOriginCannotLink) {
    const auto before = store->values;
    for (const char* sender : {"https://app.test/", "http://app.test:8443/", "https://evil.test:8443/", "file:///x"}) {
        const auto outcome = session.adoptLink(linkWith(), url(sender)).result();
        ASSERT_FALSE(outcome) << sender;
        EXPECT_EQ(outcome.error(), LinkError::wrongOrigin());
    }
    EXPECT_EQ(LinkError::wrongOrigin().message(), "Ignored a link request from a page that isn't the Parvela web app.");
    EXPECT_EQ(store->values, before);
    EXPECT_TRUE(secrets->calls.empty());
}

TEST_F(ParvelaSessionTest, aTokenThatCannotBeSavedLeavesTheEarlierLink) {
    ASSERT_TRUE(session.adoptLink(linkWith(), std::nullopt).result());
    const auto before = store->values;
    secrets->fail("update", SecretStatus::locked);
    const auto outcome = session.adoptLink(linkWith("tk_other", "https://other.test"), std::nullopt).result();
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error().message(), "Couldn't save to the Keychain (error -25308).");
    EXPECT_EQ(store->values, before);
    EXPECT_EQ(session.client().result()->token, "tk_device");
}

TEST_F(ParvelaSessionTest, aLinkBelongsToTheWebAppThatWasInForceWhenItWasAskedFor) {
    secrets->hold();
    auto adopting = session.adoptLink(linkWith(), url("https://app.test:8443"));
    store->set("serverMode", std::string("local"));
    secrets->release();
    ASSERT_TRUE(std::move(adopting).result());
    EXPECT_EQ(session.linkInfo(), std::nullopt);
    EXPECT_TRUE(session.prefs().linkInfo("https://app.test:8443"));
}

TEST_F(ParvelaSessionTest, pastedTextsAreCheckedBeforeAnythingIsStored) {
    for (const char* text : {"", "abc", "tk_", "tk_a b"}) {
        const auto outcome = session.savePastedToken(text).result();
        ASSERT_FALSE(outcome) << text;
        EXPECT_EQ(
            outcome.error(),
            PastedTokenError(APIError::badRequest("That doesn't look like a Parvela token. It starts with tk_.")));
    }
    EXPECT_TRUE(secrets->calls.empty());

    ASSERT_TRUE(session.savePastedToken(" Bearer tk_mine \n").result());
    EXPECT_EQ(tokenOf("typed.test"), "tk_mine");

    secrets->fail("update", SecretStatus::noService);
    const auto refused = session.savePastedToken("tk_more").result();
    ASSERT_FALSE(refused);
    EXPECT_EQ(message(refused.error()), "Couldn't save to the Keychain (error -25291).");
    EXPECT_EQ(tokenOf("typed.test"), "tk_mine");
}

class UnlinkTest : public ParvelaSessionTest {
protected:
    UnlinkTest() { std::move(session.adoptLink(linkWith(), std::nullopt)).result().value(); }

    void expectForgotten() {
        EXPECT_EQ(tokenOf("api.test"), "none");
        EXPECT_EQ(session.linkInfo(), std::nullopt);
        EXPECT_EQ(session.server().apiURL.text(), "https://typed.test");
        EXPECT_EQ(session.client().result(), std::nullopt);
    }
};

TEST_F(UnlinkTest, takesBackThePushRegistrationAndThenTheToken) {
    session.prefs().setPushToken("abcd");
    const auto unregistering = network.hold("POST /api/v1/devices/push/remove");
    network.answer("POST /api/v1/token/revoke", 200, R"({"ok":true})");
    auto unlinking = session.unlink();
    EXPECT_EQ(network.requests().size(), 1U);
    EXPECT_EQ(network.requests()[0].headers[0], (HttpHeader{"Authorization", "Bearer tk_device"}));
    unregistering.resolve(test::FakeTransport::ok(R"({"ok":true})"));
    EXPECT_EQ(std::move(unlinking).result(), Unlinked::revoked);
    EXPECT_EQ(network.routes().back(), "POST /api/v1/token/revoke");
    expectForgotten();
}

TEST_F(UnlinkTest, failuresAtTheServiceDoNotKeepTheLink) {
    session.prefs().setPushToken("abcd");
    network.fail("POST /api/v1/devices/push/remove", TransportError::unreachable);
    network.fail("POST /api/v1/token/revoke", TransportError::unreachable);
    EXPECT_EQ(session.unlink().result(), Unlinked::notRevoked);
    expectForgotten();
}

TEST_F(UnlinkTest, aTokenThatTheServiceNoLongerKnowsIsRevoked) {
    network.answer("POST /api/v1/token/revoke", 401);
    EXPECT_EQ(session.unlink().result(), Unlinked::revoked);
    expectForgotten();
}

TEST_F(UnlinkTest, tellsWhenTheKeyringDoesNotLetGo) {
    network.answer("POST /api/v1/token/revoke", 200, R"({"ok":true})");
    secrets->fail("remove", SecretStatus::locked);
    EXPECT_EQ(session.unlink().result(), Unlinked::stillKept);
    secrets->fail("read", SecretStatus::noService);
    EXPECT_EQ(session.unlink().result(), Unlinked::noAnswer);
}

TEST_F(UnlinkTest, withoutATokenTheServiceIsNotAsked) {
    secrets->secrets.clear();
    EXPECT_EQ(session.unlink().result(), Unlinked::nothingStored);
    EXPECT_TRUE(network.requests().empty());
    expectForgotten();
}

TEST_F(UnlinkTest, aLinkMadeMeanwhileStays) {
    const auto revoking = network.hold("POST /api/v1/token/revoke");
    auto unlinking = session.unlink();
    ASSERT_TRUE(session.adoptLink(linkWith("tk_new"), std::nullopt).result());
    revoking.resolve(test::FakeTransport::ok(R"({"ok":true})"));
    ASSERT_TRUE(unlinking.done());
    EXPECT_EQ(tokenOf("api.test"), "tk_new");
    EXPECT_TRUE(session.linkInfo());
}

}  // namespace
}  // namespace parvela
