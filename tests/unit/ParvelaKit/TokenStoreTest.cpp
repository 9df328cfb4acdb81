#include "support/FakeSecretStore.h"

#include <ParvelaKit/DeviceIdentity.h>
#include <ParvelaKit/TokenFormat.h>
#include <ParvelaKit/TokenStore.h>

namespace parvela {
namespace {

TEST(TokenFormat, acceptsOnlyTheAsciiForm) {
    for (const std::string& token : std::vector<std::string>{"tk_a", "tk_A-b_9", "tk_" + std::string(508, 'x')}) {
        EXPECT_TRUE(TokenFormat::isValid(token)) << token;
    }
    for (const std::string& token :
         std::vector<std::string>{"tk_" + std::string(509, 'x'), "tk_", "", "TK_abc", "tk_abc!", "tk_äbc",
                                  "tk_a\u0301bc", "tk_ab c", "tk_abc\n", std::string("tk_a\0b", 6), " tk_abc"}) {
        EXPECT_FALSE(TokenFormat::isValid(token)) << token;
    }
}

TEST(TokenFormat, normalisingDropsBlanksAndTheBearerWord) {
    const struct {
        const char* pasted;
        const char* normal;
    } cases[] = {
        {"bearer tk_abc", "tk_abc"},
        {"BEARER  tk_abc", "tk_abc"},
        {" \tBearer tk_abc123 \n", "tk_abc123"},
        {"\u00a0tk_abc\u2028", "tk_abc"},
        {"Bearertk_abc", "Bearertk_abc"},
        {"bearer \ntk_abc", "\ntk_abc"},
        {"bearer bearer tk_a", "bearer tk_a"},
        {"bearer ", "bearer"},
        {"", ""},
    };
    for (const auto& [pasted, normal] : cases) EXPECT_EQ(TokenFormat::normalize(pasted), normal) << pasted;
}

TEST(TokenFormat, theHintShowsFiveCharactersAtMost) {
    EXPECT_EQ(tokenHint(""), "none");
    EXPECT_EQ(tokenHint("tk_secret"), "tk_se…");
    EXPECT_EQ(tokenHint("äöüßéX"), "äöüßé…");
}

class TokenStoreTest : public testing::Test {
protected:
    static Url url(std::string_view text) { return Url::parse(text).value(); }
    std::string read(const TokenStore& tokens, const Url& of) { return tokens.read(of).result().value_or("none"); }

    std::shared_ptr<test::FakeSecretStore> secrets = std::make_shared<test::FakeSecretStore>();
    Url site = url("https://api.test");
};

TEST_F(TokenStoreTest, sitesAreToldApartByHostAndExplicitPort) {
    const struct {
        const char* url;
        const char* account;
    } cases[] = {
        {"https://API.test/x", "api.test"},
        {"http://api.test", "api.test"},
        {"http://127.0.0.1:3213", "127.0.0.1:3213"},
        {"https://127.0.0.1:3213/y", "127.0.0.1:3213"},
        {"https://h:443", "h:443"},
        {"https://h:/", "h"},
        {"http://[::1]:80", "::1:80"},
        {"/relative", "default"},
    };
    for (const auto& [text, account] : cases) EXPECT_EQ(TokenStore::accountKey(url(text)), account) << text;
}

TEST_F(TokenStoreTest, theFirstSaveAddsAndTheNextUpdates) {
    const TokenStore tokens(secrets);
    EXPECT_EQ(tokens.save("tk_one", site).result(), SecretStatus::success);
    EXPECT_EQ(tokens.save("tk_two", site).result(), SecretStatus::success);
    EXPECT_THAT(secrets->calls,
                testing::ElementsAre("update app.parvela.token api.test", "add app.parvela.token api.test",
                                     "update app.parvela.token api.test"));
    EXPECT_EQ(secrets->labels["app.parvela.token api.test"], "Parvela API token");
    EXPECT_EQ(read(tokens, site), "tk_two");
    EXPECT_EQ(read(tokens, url("https://api.test:8443")), "none");
}

TEST_F(TokenStoreTest, withAGroupThereAreTwoCopies) {
    const TokenStore tokens(secrets, "team");
    EXPECT_EQ(tokens.save("tk_a", site).result(), SecretStatus::success);
    EXPECT_EQ(secrets->secrets["app.parvela.token api.test"], "tk_a");
    EXPECT_EQ(secrets->secrets["app.parvela.token api.test team"], "tk_a");

    secrets->secrets.erase("app.parvela.token api.test team");
    EXPECT_EQ(read(tokens, site), "tk_a");
    secrets->secrets["app.parvela.token api.test team"] = "\xff";
    EXPECT_EQ(read(tokens, site), "tk_a");
    secrets->secrets["app.parvela.token api.test team"] = "tk_group";
    EXPECT_EQ(read(tokens, site), "tk_group");

    secrets->calls.clear();
    EXPECT_EQ(tokens.remove(site).result(), SecretStatus::success);
    EXPECT_THAT(secrets->calls,
                testing::ElementsAre("remove app.parvela.token api.test team", "remove app.parvela.token api.test"));
    EXPECT_TRUE(secrets->secrets.empty());
}

TEST_F(TokenStoreTest, theStatusOfASaveIsTheFirstCopysUnlessThatFailed) {
    const std::string ownItem = "app.parvela.token api.test", sharedItem = ownItem + " team";
    const struct {
        SecretStatus own, shared, result;
    } cases[] = {
        {SecretStatus::success, SecretStatus::locked, SecretStatus::success},
        {SecretStatus::locked, SecretStatus::success, SecretStatus::success},
        {SecretStatus::locked, SecretStatus::noService, SecretStatus::noService},
    };
    for (const auto& [ownStatus, sharedStatus, result] : cases) {
        secrets->fail("update", ownStatus, ownItem);
        secrets->fail("update", sharedStatus, sharedItem);
        secrets->secrets = {{ownItem, "x"}, {sharedItem, "x"}};
        EXPECT_EQ(TokenStore(secrets, "team").save("tk_a", site).result(), result);
        EXPECT_EQ(TokenStore(secrets).save("tk_a", site).result(), ownStatus);
    }
}

TEST_F(TokenStoreTest, onlyAKeyringThatSaysSoHasNoToken) {
    const std::string ownItem = "app.parvela.token api.test", sharedItem = ownItem + " team";
    const struct {
        SecretStatus own, shared, result;
        std::size_t calls;
    } cases[] = {
        {SecretStatus::notFound, SecretStatus::notFound, SecretStatus::notFound, 2},
        {SecretStatus::notFound, SecretStatus::locked, SecretStatus::locked, 2},
        {SecretStatus::locked, SecretStatus::notFound, SecretStatus::locked, 2},
        {SecretStatus::noService, SecretStatus::noService, SecretStatus::noService, 1},
    };
    for (const auto& [ownStatus, sharedStatus, result, calls] : cases) {
        secrets->calls.clear();
        secrets->fail("read", ownStatus, ownItem);
        secrets->fail("read", sharedStatus, sharedItem);
        EXPECT_EQ(TokenStore(secrets, "team").read(site).result().error(), result);
        EXPECT_EQ(secrets->calls.size(), calls);
    }
}

TEST_F(TokenStoreTest, aRemovalDuringASaveWaitsForBothCopies) {
    const TokenStore tokens(secrets, "team");
    secrets->hold();
    auto saving = tokens.save("tk_a", site);
    auto removing = tokens.remove(site);
    EXPECT_EQ(secrets->calls.size(), 1U);
    secrets->release();
    EXPECT_EQ(std::move(saving).result(), SecretStatus::success);
    EXPECT_EQ(std::move(removing).result(), SecretStatus::success);
    EXPECT_TRUE(secrets->secrets.empty());
}

class DeviceIdentityTest : public testing::Test {
protected:
    DeviceIdentity identity() {
        return DeviceIdentity(secrets, [this] { return "NEW-" + std::to_string(++made); });
    }

    std::shared_ptr<test::FakeSecretStore> secrets = std::make_shared<test::FakeSecretStore>();
    const std::string item = "app.parvela.device device-id";
    int made = 0;
};

TEST_F(DeviceIdentityTest, isMadeOnceAndKept) {
    EXPECT_EQ(identity().id().result(), "NEW-1");
    EXPECT_EQ(secrets->secrets[item], "NEW-1");
    EXPECT_EQ(secrets->labels[item], "Parvela device id");
    EXPECT_EQ(identity().id().result(), "NEW-1");
}

TEST_F(DeviceIdentityTest, twoCallersAtOnceGetTheSameId) {
    const auto device = identity();
    secrets->hold();
    auto first = device.id();
    auto second = device.id();
    secrets->release();
    EXPECT_EQ(std::move(first).result(), "NEW-1");
    EXPECT_EQ(std::move(second).result(), "NEW-1");
    EXPECT_EQ(made, 1);
}

TEST_F(DeviceIdentityTest, aLockedKeyringKeepsItsId) {
    secrets->secrets[item] = "OLD";
    secrets->fail("read", SecretStatus::locked);
    const auto device = identity();
    EXPECT_EQ(device.id().result(), "NEW-1");
    EXPECT_EQ(device.id().result(), "NEW-1");
    EXPECT_EQ(secrets->secrets[item], "OLD");
    secrets->fail("read", SecretStatus::success);
    EXPECT_EQ(device.id().result(), "OLD") << "once it is unlocked";
}

TEST_F(DeviceIdentityTest, theIdOfALockedKeyringIsKeptOnceItIsUnlocked) {
    secrets->fail("read", SecretStatus::locked);
    const auto device = identity();
    EXPECT_EQ(device.id().result(), "NEW-1");
    secrets->fail("read", SecretStatus::success);
    EXPECT_EQ(device.id().result(), "NEW-1");
    EXPECT_EQ(secrets->secrets[item], "NEW-1");
}

TEST_F(DeviceIdentityTest, anIdThatCannotBeKeptStillServes) {
    secrets->fail("add", SecretStatus::failed);
    EXPECT_EQ(identity().id().result(), "NEW-1");
}

TEST(DeviceIdentity, randomIdsAreUpperCaseUuids) {
    const std::string id = DeviceIdentity::randomId();
    EXPECT_THAT(id, testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    EXPECT_NE(id, DeviceIdentity::randomId());
}

}  // namespace
}  // namespace parvela
