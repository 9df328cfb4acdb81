#include <ParvelaKit/DeepLink.h>
#include <ParvelaKit/OAuthHandoff.h>

namespace parvela {
namespace {

Url url(std::string_view text) {
    return Url::parse(text).value();
}

DeepLink add(std::string title, std::optional<std::string> description = {}) {
    return {DeepLink::AddTask{{std::move(title), std::move(description)}}};
}
DeepLink task(std::string key) {
    return {DeepLink::OpenTask{std::move(key)}};
}
DeepLink path(std::string text) {
    return {DeepLink::OpenPath{std::move(text)}};
}

TEST(DeepLink, readsWhatAUrlAsksFor) {
    const struct {
        const char* url;
        DeepLink expected;
    } cases[] = {
        {"PARVELA://ADD?title=%20Buy%20milk%20", add("Buy milk")},
        {"parvela://add?title=A&description=%20d%0A", add("A", " d\n")},
        {"parvela://add?title=A&description=", add("A")},
        {"parvela://add?title=first&title=second", add("first")},
        {"parvela://add?title&title=second", add("second")},
        {"parvela://add?title=1+1%2B1", add("1+1+1")},
        {"parvela://task?key=TSK-7", task("TSK-7")},
        {"parvela://task/TSK-7/", task("TSK-7")},
        {"parvela://task//TSK%2D7", task("TSK-7")},
        {"parvela://task/OTHER?key=TSK-7", task("TSK-7")},
        {"parvela://task/TSK-7?key", task("TSK-7")},
        {"parvela://open?path=/boards", path("/boards")},
        {"parvela://open?path=/b/1%3Fview%3Dlist", path("/b/1?view=list")},
        {"parvela://quick-add", DeepLink{DeepLink::QuickAdd{}}},
        {"parvela://Quick-Add/x?y=1#z", DeepLink{DeepLink::QuickAdd{}}},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(DeepLink::parse(url(text)), expected) << text;
    for (const char* text :
         {"parvela://add?title=%20%20", "parvela://add?Title=A", "parvela://add", "parvela://add?title=%FF",
          "parvela://add?title=A&x=%C3", "parvela://add?title=%00A", "parvela://task/TSK-7?key=", "parvela://task",
          "parvela://task/", "parvela://task/%FF", "parvela://open?path=boards", "parvela://open?path=//elsewhere",
          "parvela://open?path=%2F%2Felsewhere", "parvela://open", "parvela://other", "parvela://",
          "parvela:add?title=A", "//add?title=A", "https://add?title=A"}) {
        EXPECT_EQ(DeepLink::parse(url(text)), std::nullopt) << text;
    }
}

TEST(DeepLink, buildingAndReadingGivesTheSameLinkBack) {
    const DeepLink links[] = {
        add("a&b=c#d +%41 ü/?"), add("A", "line\nline ;"),    task("TSK-42"),
        task("a/b?c"),           path("/b/1?view=a&x=%20#y"), {DeepLink::QuickAdd{}},
    };
    for (const auto& link : links) EXPECT_EQ(DeepLink::parse(link.url()), link) << link.url().text();
    EXPECT_EQ(add("A b", "c").url().text(), "parvela://add?title=A%20b&description=c");
    EXPECT_EQ(DeepLink{DeepLink::QuickAdd{}}.url().text(), "parvela://quick-add");
}

TEST(OAuthHandoff, signInStartsInTheBrowser) {
    EXPECT_TRUE(OAuthHandoff::isSignInURL(url("https://api.test/api/auth/signin/github?x")));
    EXPECT_TRUE(OAuthHandoff::isSignInURL(url("https://api.test/api/auth/%73ignin/github")));
    EXPECT_FALSE(OAuthHandoff::isSignInURL(url("https://api.test/x/api/auth/signin/github")));
    EXPECT_FALSE(OAuthHandoff::isSignInURL(url("https://api.test/api/auth/signin")));
    EXPECT_FALSE(OAuthHandoff::isSignInURL(url("https://api.test/?/api/auth/signin/")));
    EXPECT_EQ(
        OAuthHandoff::startURL(url("https://app.test/base"), url("https://api.test/api/auth/signin/g?a=1&b=2")).text(),
        "https://app.test/oauth/start?u=https%3A%2F%2Fapi%2Etest%2Fapi%2Fauth%2Fsignin%2Fg%3Fa%3D1%26b%3D2");
}

TEST(OAuthHandoff, theCallbackCarriesACode) {
    const Url app = url("http://localhost:3100");
    EXPECT_EQ(OAuthHandoff::completionURL(app, url("Parvela://AUTH-callback?x=1&code=a-1%26b")),
              url("http://localhost:3100/oauth/complete?code=a%2D1%26b"));
    for (const char* callback :
         {"parvela://auth-callback?code=", "parvela://auth-callback", "parvela://auth-callback?code=%FF",
          "parvela://add?code=1", "https://auth-callback?code=1"}) {
        EXPECT_EQ(OAuthHandoff::completionURL(app, url(callback)), std::nullopt) << callback;
    }
}

}  // namespace
}  // namespace parvela
