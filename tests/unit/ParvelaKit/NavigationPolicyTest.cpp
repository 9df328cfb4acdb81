#include "support/FakeClock.h"

#include <ParvelaKit/ContentFilter.h>
#include <ParvelaKit/NavigationPolicy.h>

#include <regex>

#include <nlohmann/json.hpp>

namespace parvela {
namespace {

using Action = NavigationPolicy::Action;
using Frame = NavigationPolicy::Frame;
using Gesture = NavigationPolicy::Gesture;
using Purpose = NavigationPolicy::Purpose;

Url url(std::string_view text) {
    return Url::parse(text).value();
}

class NavigationPolicyTest : public testing::Test {
protected:
    static std::string described(const NavigationPolicy::Decision& decision) {
        constexpr const char* names[] = {"allow", "cancel", "download", "tab", "browser", "handler", "handOff"};
        return names[static_cast<int>(decision.action)] + (decision.url ? " " + decision.url->text() : std::string());
    }
    std::string navigation(std::string_view to, Frame frame = Frame::main, Purpose purpose = Purpose::show) {
        return described(policy.navigation(to, frame, Gesture::user, purpose, server));
    }
    std::string newWindow(std::string_view to) { return described(policy.newWindow(to, Gesture::user, server)); }

    std::shared_ptr<test::FakeClock> clock = std::make_shared<test::FakeClock>();
    NavigationPolicy policy{clock};
    ServerConfig server = ServerConfig::local();
};

const std::string handOff = "handOff http://localhost:3100/oauth/start?u=";

TEST_F(NavigationPolicyTest, mainFramesStayInTheApp) {
    const struct {
        const char* url;
        std::string decision;
    } cases[] = {
        {"http://localhost:3100/b/1?q=a|b", "allow"},
        {"http://127.0.0.1:3213/api/v1/x", "allow"},
        {"about:blank", "allow"},
        {"javascript:alert(\"x\")", "allow"},
        {"https://example.com/a?b", "browser https://example.com/a?b"},
        {"http://localhost.example.com/", "browser http://localhost.example.com/"},
        {"http://localhost@example.com/", "browser http://localhost@example.com/"},
        {"file:///etc/passwd", "browser file:///etc/passwd"},
        {"mailto:robin@example.com?subject=a b", "handler mailto:robin@example.com?subject=a%20b"},
        {"MAILTO:robin@example.com", "handler MAILTO:robin@example.com"},
        {"parvela://quick-add", "handler parvela://quick-add"},
        {"http://127.0.0.1:3213/api/auth/signin/g?a=1",
         handOff + "http%3A%2F%2F127%2E0%2E0%2E1%3A3213%2Fapi%2Fauth%2Fsignin%2Fg%3Fa%3D1"},
        {"https://out.test/api/auth/%73ignin/g", handOff + "https%3A%2F%2Fout%2Etest%2Fapi%2Fauth%2F%2573ignin%2Fg"},
        {"http://localhost:3100/api/auth/signin/g", "allow"},
        {"", "cancel"},
        {"no-scheme", "cancel"},
        {"http://[::1", "cancel"},
    };
    for (const auto& [to, decision] : cases) EXPECT_EQ(navigation(to), decision) << to;
}

TEST_F(NavigationPolicyTest, framesWithinAPageLoadWhatBrowsersCanShow) {
    for (const Frame frame : {Frame::child, Frame::unknown}) {
        EXPECT_EQ(navigation("https://example.com/", frame), "allow");
        EXPECT_EQ(navigation("data:text/html,<b>", frame), "allow");
        EXPECT_EQ(navigation("https://out.test/api/auth/signin/g", frame), "allow");
        EXPECT_EQ(navigation("tel:123", frame), "handler tel:123");
    }
    // The filter cannot see through percent escapes, so such a sign-in must not depend on it.
    EXPECT_EQ(navigation("https://out.test/api/auth/%73ignin/g", Frame::child), "allow");
    EXPECT_THAT(navigation("https://out.test/api/auth/%73ignin/g", Frame::unknown), testing::StartsWith("handOff"));
}

TEST_F(NavigationPolicyTest, downloadsAreTakenFromAnywhere) {
    EXPECT_EQ(navigation("https://example.com/x.zip", Frame::main, Purpose::download), "download");
    const struct {
        NavigationPolicy::Display display;
        std::optional<std::string_view> disposition;
        Action action;
    } cases[] = {
        {NavigationPolicy::Display::supported, {}, Action::allow},
        {NavigationPolicy::Display::supported, "inline; filename=attachment.txt", Action::allow},
        {NavigationPolicy::Display::supported, "Attachment; filename=x", Action::download},
        {NavigationPolicy::Display::unsupported, {}, Action::download},
        {NavigationPolicy::Display::unsupported, "inline", Action::download},
    };
    for (const auto& [display, disposition, action] : cases) {
        EXPECT_EQ(NavigationPolicy::response(display, disposition), action) << disposition.value_or("none");
    }
}

TEST_F(NavigationPolicyTest, newWindowsAreTabsOrLeaveTheApp) {
    EXPECT_EQ(newWindow("http://localhost:3100/t/TSK-1"), "tab http://localhost:3100/t/TSK-1");
    EXPECT_EQ(newWindow("about:blank"), "cancel");
    EXPECT_EQ(newWindow("blob:http://localhost:3100/1"), "cancel");
    EXPECT_EQ(newWindow("https://example.com/"), "browser https://example.com/");
    EXPECT_EQ(newWindow("mailto:a@b.test"), "handler mailto:a@b.test");
    EXPECT_THAT(newWindow("http://127.0.0.1:3213/api/auth/signin/g"), testing::StartsWith("handOff"));
    EXPECT_EQ(newWindow(""), "cancel");
}

TEST_F(NavigationPolicyTest, withoutAGestureOtherProgramsStartAtMostOnceASecond) {
    using namespace std::chrono_literals;
    const auto script = [this](std::string_view to) {
        return policy.navigation(to, Frame::main, Gesture::none, Purpose::show, server).action;
    };
    EXPECT_EQ(script("https://example.com/1"), Action::openInBrowser);
    EXPECT_EQ(script("mailto:x"), Action::cancel);
    EXPECT_EQ(script("https://out.test/api/auth/signin/g"), Action::cancel);
    EXPECT_EQ(policy.newWindow("https://example.com/", Gesture::none, server).action, Action::cancel);
    EXPECT_EQ(script("http://localhost:3100/"), Action::allow);
    clock->advance(999ms);
    EXPECT_EQ(script("https://example.com/2"), Action::cancel);
    clock->advance(1ms);
    EXPECT_EQ(script("https://example.com/3"), Action::openInBrowser);
    EXPECT_EQ(navigation("https://example.com/4"), "browser https://example.com/4");
    clock->advance(500ms);
    EXPECT_EQ(script("https://example.com/5"), Action::cancel);
    clock->advance(-1h);  // the clock was set back
    EXPECT_EQ(script("https://example.com/6"), Action::openInBrowser);
}

TEST_F(NavigationPolicyTest, tabsOpenOneASecondOrAFewForAGesture) {
    using namespace std::chrono_literals;
    const auto opened = [this](Gesture gesture, int wishes) {
        int tabs = 0;
        for (int i = 0; i < wishes; ++i) {
            if (policy.newWindow("http://localhost:3100/", gesture, server).action == Action::openTab) ++tabs;
        }
        return tabs;
    };
    EXPECT_EQ(opened(Gesture::none, 100), 1);
    EXPECT_EQ(opened(Gesture::user, 100), 4);
    clock->advance(1s);
    EXPECT_EQ(opened(Gesture::user, 100), 5);
    EXPECT_EQ(opened(Gesture::none, 100), 0);
    clock->advance(-1h);
    EXPECT_EQ(opened(Gesture::none, 100), 1);
}

TEST_F(NavigationPolicyTest, aStoppedLoadGoesWhereItsOwnRedirectLed) {
    const std::string began = "http://localhost:3100/go";
    const auto signIn = [](const std::string& host) { return "https://" + host + "/api/auth/signin/g"; };
    const struct {
        std::vector<std::string> before;  ///< redirects while no main frame loads: of other frames
        std::vector<std::string> during;
        std::string target;
    } cases[] = {
        {{}, {"https://out.test/a"}, "browser https://out.test/a"},
        {{}, {"http://localhost:3100/on", "https://out.test/a"}, "browser https://out.test/a"},
        {{"https://ad.test/"}, {"https://out.test/a"}, "browser https://out.test/a"},
        {{}, {signIn("out.test")}, "handOff"},
        {{}, {"mailto:a@b.test"}, "handler mailto:a@b.test"},
        {{}, {"https://out.test/a", "https://out.test/a"}, "browser https://out.test/a"},
        {{}, {"https://ad.test/", "https://out.test/a"}, "browser " + began},
        {{"https://ad.test/"}, {}, "cancel"},
        {{}, {"http://localhost:3100/on"}, "cancel"},
    };
    for (const auto& [before, during, target] : cases) {
        policy.mainLoadEnded();
        for (const std::string& one : before) policy.redirected(one);
        policy.mainLoadStarted();
        for (const std::string& one : during) policy.redirected(one);
        EXPECT_THAT(described(policy.blocked(began, server)), testing::StartsWith(target));
        clock->advance(std::chrono::seconds{1});
        EXPECT_EQ(described(policy.blocked(began, server)), "cancel") << "a redirect counts for one load";
    }
    EXPECT_EQ(described(policy.blocked("https://out.test/b", server)), "browser https://out.test/b");
    EXPECT_EQ(described(policy.blocked("", server)), "cancel");
}

struct CompiledRule {
    std::regex url;
    bool blocks;
};

/// Expects that the rules are for documents of main frames only.
std::vector<CompiledRule> compiled(const std::string& rules) {
    std::vector<CompiledRule> list;
    for (const auto& rule : nlohmann::json::parse(rules)) {
        const auto& trigger = rule.at("trigger");
        EXPECT_EQ(trigger.at("load-context"), nlohmann::json::array({"top-frame"}));
        EXPECT_EQ(trigger.at("resource-type"), nlohmann::json::array({"document"}));
        EXPECT_EQ(trigger.at("url-filter-is-case-sensitive"), true);
        const auto action = rule.at("action").at("type");
        EXPECT_TRUE(action == "block" || action == "ignore-previous-rules");
        list.push_back({std::regex(trigger.at("url-filter").get<std::string>()), action == "block"});
    }
    return list;
}

/// Applies the rules to a document of a main frame as WebKit does: the last matching rule decides.
bool isBlocked(const std::vector<CompiledRule>& rules, const std::string& to) {
    bool blocked = false;
    for (const auto& rule : rules) {
        if (std::regex_search(to, rule.url)) blocked = rule.blocks;
    }
    return blocked;
}

/// Web URLs in canonical form, near and far from the web app.
std::vector<std::string> webUrls() {
    std::vector<std::string> urls;
    for (const std::string host :
         {"localhost", "127.0.0.1", "[::1]", "app.test", "api.test", "a.b-c.test", "axb-c.test", "app.test.evil.test",
          "evil-app.test", "127.0.0.12", "app.parvela.example"}) {
        for (const std::string& authority : {host, host + ":3100", host + ":8443", "me:app.test@" + host}) {
            for (const char* path : {"/", "/b/1?x=/api/auth/signin/", "/api/auth/signin/g?x#y", "/API/auth/signin/g",
                                     "/?u=http://app.test/"}) {
                urls.push_back("http://" + authority + path);
                urls.push_back("https://" + authority + path);
            }
        }
    }
    return urls;
}

TEST(ContentFilter, blocksExactlyWhatThePolicyKeepsOutOfMainFrames) {
    const ServerConfig configurations[] = {
        ServerConfig::local(),
        ServerConfig::production(),
        {ServerConfig::Mode::custom, url("https://App.test/base"), url("https://api.test:8443/x")},
        {ServerConfig::Mode::custom, url("http://a.b-c.test:80"), url("http://127.0.0.1:9")},
        {ServerConfig::Mode::custom, url("http://[::1]:3100"), url("https://api.test")},
    };
    auto urls = webUrls();
    for (const char* other :
         {"about:blank", "blob:http://evil.test/1", "data:text/html,x", "javascript:void(0)", "file:///etc/passwd"}) {
        urls.push_back(other);
    }
    for (const auto& config : configurations) {
        const auto rules = compiled(contentFilterRules(config));
        NavigationPolicy policy(std::make_shared<test::FakeClock>());
        for (const auto& to : urls) {
            const auto decision = policy.navigation(to, Frame::main, Gesture::user, Purpose::show, config);
            ASSERT_EQ(!isBlocked(rules, to), decision.action == Action::allow)
                << to << " with the web app at " << config.appURL.text();
        }
    }
}

TEST(ContentFilter, usesOnlyWhatWebKitsExpressionsKnow) {
    for (const auto& rule : nlohmann::json::parse(contentFilterRules(ServerConfig::local()))) {
        const std::string pattern = rule.at("trigger").at("url-filter");
        EXPECT_EQ(pattern.find_first_of("|{}"), std::string::npos) << pattern;
        EXPECT_FALSE(pattern.contains("(?")) << pattern;
        EXPECT_TRUE(std::ranges::all_of(pattern, [](char c) { return c > 0; })) << pattern;
    }
}

}  // namespace
}  // namespace parvela
