#include "support/MemoryStore.h"

#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/Preferences.h>
#include <ParvelaKit/ServerConfig.h>

namespace parvela {
namespace {

Url url(std::string_view text) {
    return Url::parse(text).value();
}

TEST(ServerConfig, normalisesTypedAddresses) {
    const struct {
        const char* typed;
        const char* expected;
    } cases[] = {
        {"  example.com/ ", "https://example.com"},
        {"\n example.com:3000//\n", "https://example.com:3000"},
        {"HTTP://Host/base/", "HTTP://Host/base"},
        {"https://[::1]:8443", "https://[::1]:8443"},
    };
    for (const auto& [typed, expected] : cases) EXPECT_EQ(ServerConfig::normalize(typed), url(expected)) << typed;
    for (const char* typed : {"ftp://example.com", "https://example.com?a=1", "https://example.com?",
                              "https://example.com/#", "http://", "https://:80", "", " \n", "///", "exa mple.com",
                              "https://exämple.com", "javascript:alert(1)", "https://h:99999", "://h"}) {
        EXPECT_EQ(ServerConfig::normalize(typed), std::nullopt) << typed;
    }
}

TEST(ServerConfig, originsIgnoreCaseAndDefaultPorts) {
    const struct {
        const char* url;
        const char* origin;
    } cases[] = {
        {"HTTPS://LOCALHOST:443/x?y#z", "https://localhost"},
        {"http://localhost:80", "http://localhost"},
        {"http://localhost:3100/b", "http://localhost:3100"},
        {"http://localhost:443", "http://localhost:443"},
        {"https://h:80", "https://h:80"},
        {"//Host/x", "https://host"},
        {"ftp://h:80", "ftp://h"},
        {"http://[::1]:3100/", "http://::1:3100"},
        {"https://h:/", "https://h"},
        {"about:blank", "about://"},
    };
    for (const auto& [text, origin] : cases) EXPECT_EQ(ServerConfig::origin(url(text)), origin) << text;
    EXPECT_TRUE(ServerConfig::local().isAppOrigin(url("HTTP://Localhost:3100/deep?x")));
    EXPECT_FALSE(ServerConfig::local().isAppOrigin(url("http://localhost:3101/")));
    EXPECT_FALSE(ServerConfig::local().isAppOrigin(url("https://localhost:3100/")));
}

TEST(ServerConfig, whatIsInTheAppIsNotWhatMayHaveAToken) {
    const struct {
        const char* url;
        bool inApp;
        bool token;
    } cases[] = {
        {"http://localhost:3213", true, true},
        {"http://127.0.0.1:3100/x", true, true},
        {"https://LOCALHOST/", true, true},
        {"http://[::1]:3100", false, true},
        {"https://example.com", false, true},
        {"http://example.com", false, false},
        {"http://localhost.example.com", false, false},
        {"http://localhost@example.com", false, false},
        {"about:blank", true, false},
        {"JavaScript:void(0)", true, false},
        {"blob:http://localhost/1", true, false},
        {"file:///etc/passwd", false, false},
        {"mailto:a@b", false, false},
        {"/relative", false, false},
        {"//localhost/x", false, false},
        {"http:///x", false, false},
    };
    for (const auto& [text, inApp, token] : cases) {
        EXPECT_EQ(ServerConfig::local().isInApp(url(text)), inApp) << text;
        EXPECT_EQ(ServerConfig::allowsToken(url(text)), token) << text;
    }
    // The loopback names stand for each other only when one of them is in use.
    EXPECT_FALSE(ServerConfig::production().isInApp(url("http://localhost:3100")));
    const ServerConfig mixed{ServerConfig::Mode::custom, url("https://app.test"), url("http://127.0.0.1:1")};
    EXPECT_TRUE(mixed.isInApp(url("http://localhost:3100")));
    EXPECT_TRUE(mixed.isInApp(url("http://APP.test:8080/x")));
}

TEST(ServerConfig, pagesOfTheWebAppAreEncodedOnce) {
    const ServerConfig config{ServerConfig::Mode::custom, url("https://h/base/"), url("https://h")};
    EXPECT_EQ(config.appPage("/settings/developers").text(), "https://h/base/settings/developers");
    EXPECT_EQ(config.appPage("a b?c#d%41").text(), "https://h/base/a%20b%3Fc%23d%2541");
    EXPECT_EQ(config.appPageAt("/b/1?view=list").text(), "https://h/base/b/1?view=list");
    EXPECT_EQ(config.appPageAt("/b/a%20b ü?q=%26 x+y&z=#1%").text(),
              "https://h/base/b/a%20b%20%C3%BC?q=%26%20x+y&z=%231%25");
    EXPECT_EQ(config.appPageAt("/x?a?b").text(), "https://h/base/x?a?b");
}

/// Settings as text, the configuration that they make as "mode app api".
TEST(ServerConfig, theConfigurationInForceFollowsTheSettings) {
    const std::string app = ServerConfig::production().appURL.text();
    const std::string api = ServerConfig::production().apiURL.text();
    const struct {
        std::vector<std::pair<const char*, const char*>> settings;
        std::string expected;
    } cases[] = {
        {{}, "production " + app + " " + api},
        {{{"serverMode", "nonsense"}}, "production " + app + " " + api},
        {{{"serverMode", "local"}}, "local http://localhost:3100 http://127.0.0.1:3213"},
        {{{"serverMode", "local"}, {"customAppURL", "c.test"}}, "local http://localhost:3100 http://127.0.0.1:3213"},
        {{{"serverMode", "custom"}, {"customAppURL", "c.test/"}, {"customAPIURL", ""}}, "custom https://c.test " + api},
        {{{"serverMode", "custom"}, {"customAppURL", "c.test?x"}, {"customAPIURL", "d.test"}},
         "custom " + app + " https://d.test"},
        {{{"ParvelaAppURL", "o.test"}, {"ParvelaAPIURL", "bad url"}}, "production https://o.test " + api},
        {{{"serverMode", "custom"},
          {"customAppURL", "c.test"},
          {"customAPIURL", "d.test"},
          {"ParvelaAPIURL", "e.test"},
          {"linkedAPI|https://c.test", "https://linked.test/"}},
         "custom https://c.test https://linked.test"},
        {{{"serverMode", "custom"},
          {"customAppURL", "c.test"},
          {"customAPIURL", "d.test"},
          {"linkedAPI|https://c.test:8443", "https://other.test"},
          {"linkedAPI|https://c.test", "ftp://no.test"}},
         "custom https://c.test https://d.test"},
        {{{"ParvelaAppURL", "https://O.test:443"}, {"linkedAPI|https://o.test", "l.test"}},
         "production https://O.test:443 https://l.test"},
    };
    for (const auto& [settings, expected] : cases) {
        const auto store = std::make_shared<test::MemoryStore>();
        for (const auto& [key, value] : settings) store->set(key, std::string(value));
        const auto config = ServerConfig::current(Preferences(store));
        EXPECT_EQ(std::string(rawValue(config.mode)) + " " + config.appURL.text() + " " + config.apiURL.text(),
                  expected);
    }
}

TEST(BuildInfo, groupNamesAreTrimmedAndNeverUnexpanded) {
    EXPECT_EQ(BuildInfo::groupName("  team.parvela \n"), "team.parvela");
    EXPECT_EQ(BuildInfo::groupName(" \t"), std::nullopt);
    EXPECT_EQ(BuildInfo::groupName("$(TEAM)parvela"), std::nullopt);
}

}  // namespace
}  // namespace parvela
