#include <ParvelaKit/Url.h>

namespace parvela {
namespace {

TEST(Url, keepsComponentsAsWritten) {
    const auto url = Url::parse("HTTPS://Me@Example.COM:8443/a%20b/c?q=1&r#top");
    ASSERT_TRUE(url);
    EXPECT_EQ(url->scheme(), "HTTPS");
    EXPECT_EQ(url->lowercaseScheme(), "https");
    EXPECT_EQ(url->userInfo(), "Me");
    EXPECT_EQ(url->host(), "Example.COM");
    EXPECT_EQ(url->lowercaseHost(), "example.com");
    EXPECT_EQ(url->port(), 8443);
    EXPECT_EQ(url->path(), "/a%20b/c");
    EXPECT_EQ(url->decodedPath(), "/a b/c");
    EXPECT_EQ(url->query(), "q=1&r");
    EXPECT_EQ(url->fragment(), "top");
}

TEST(Url, anEmptyPortIsNoPortAndIpv6LosesItsBrackets) {
    EXPECT_EQ(Url::parse("http://h:/")->port(), std::nullopt);
    const auto url = Url::parse("http://[::1]:80/x");
    ASSERT_TRUE(url);
    EXPECT_EQ(url->host(), "::1");
    EXPECT_EQ(url->withPath("/y")->text(), "http://[::1]:80/y");
    const auto zone = Url::parse("http://u@[fe80::1%25eth0]:3213/x");
    ASSERT_TRUE(zone);
    EXPECT_EQ(zone->host(), "fe80::1%eth0");
    EXPECT_EQ(zone->withPath("/y")->text(), "http://u@[fe80::1%25eth0]:3213/y");
}

TEST(Url, refusesWhatTheStandardForbids) {
    for (const char* text : {"http://a b/", "http://exämple.com/", "http://a/%zz", "http://a/%2", "http://a:x/",
                             "http://a:99999/", "http://[::1/", "http://a/\x01", "http://a/\"q\"", "ht tp://x",
                             "http://localho%2573t/", "http://localhost%3A3100/", "http://a%2Fb/", "http://a%40b/"}) {
        EXPECT_EQ(Url::parse(text), std::nullopt) << text;
    }
}

TEST(Url, replacesComponents) {
    const auto url = Url::parse("https://h/base?x#f");
    EXPECT_EQ(url->withPath("/p%2Fq")->text(), "https://h/p%2Fq?x#f");
    EXPECT_EQ(url->withQuery("a=1")->text(), "https://h/base?a=1#f");
    EXPECT_EQ(url->withQuery(std::nullopt)->withoutFragment()->text(), "https://h/base");
    EXPECT_EQ(url->resolving("../b/TSK-1")->text(), "https://h/b/TSK-1");
    EXPECT_EQ(url->resolving("//other/x")->text(), "https://other/x");
    EXPECT_EQ(url->resolving("a b"), std::nullopt);
}

TEST(Url, takesWhatBrowserEnginesLeaveRaw) {
    const auto url = Url::parseFromEngine("http://h/a|b%20c?q={1}^%zz#\"x\"");
    ASSERT_TRUE(url);
    EXPECT_EQ(url->text(), "http://h/a%7Cb%20c?q=%7B1%7D%5E%25zz#%22x%22");
    EXPECT_EQ(Url::parseFromEngine("data:text/html,<b>é 100%")->text(), "data:text/html,%3Cb%3E%C3%A9%20100%25");
    EXPECT_EQ(Url::parseFromEngine("http://[::1"), std::nullopt);
}

TEST(Url, percentEncodingRoundTrips) {
    EXPECT_EQ(percentEncode("a/b?c#d;e ü", UrlCharacters::path), "a/b%3Fc%23d%3Be%20%C3%BC");
    EXPECT_EQ(percentEncode("a/b", UrlCharacters::pathSegment), "a%2Fb");
    EXPECT_EQ(percentEncode("a-b.c", UrlCharacters::alphanumerics), "a%2Db%2Ec");
    const std::vector<QueryItem> items = {{"q", "a&b=c+d #é"}, {"flag", std::nullopt}, {"empty", ""}};
    EXPECT_EQ(decodeQuery(encodeQuery(items)), items);
}

TEST(Url, decodingRefusesBrokenEscapes) {
    for (const char* text : {"%", "%4", "%zz", "%ff", "%00", "%C3"})
        EXPECT_EQ(percentDecode(text), std::nullopt) << text;
    EXPECT_EQ(decodeQuery("a=%zz"), std::nullopt);
}

}  // namespace
}  // namespace parvela
