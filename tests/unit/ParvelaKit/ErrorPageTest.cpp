#include <ParvelaKit/ErrorPage.h>

namespace parvela {
namespace {

Url url(std::string_view text) {
    return Url::parse(text).value();
}

TEST(ErrorPage, saysWhatWentWrong) {
    const auto& local = ServerConfig::local();
    EXPECT_EQ(ErrorPage::message(ErrorPage::Failure::unreachable, "refused", ServerConfig::production()),
              "Parvela can't be reached. Check your connection.");
    EXPECT_EQ(ErrorPage::message(ErrorPage::Failure::unreachable, "refused", local),
              "Parvela can't be reached. Check your connection, and that the local dev server is running at "
              "http://localhost:3100.");
    EXPECT_EQ(ErrorPage::message(ErrorPage::Failure::other, "The certificate <expired>.", local),
              "The certificate <expired>.");
}

TEST(ErrorPage, isOneDocumentAroundTheMessage) {
    const std::string page = ErrorPage::html("a <b>bold</b> & \"quoted\" text", url("http://localhost:3100"));
    EXPECT_TRUE(page.starts_with(
        "<!doctype html><meta charset=\"utf-8\"><meta name=\"color-scheme\" content=\"light dark\">\n"));
    EXPECT_THAT(page, testing::HasSubstr(
                          "\n<div><h1>Couldn't open Parvela</h1><p>a &lt;b>bold&lt;/b> & \"quoted\" text</p>\n"
                          "<button onclick=\"location.href=\"http://localhost:3100\"\">Try again</button></div>\n"
                          "<script>\n"));
    EXPECT_TRUE(page.ends_with("  });\n</script>"));
}

TEST(ErrorPage, theButtonIsGivenItsAddressByScript) {
    EXPECT_EQ(ErrorPage::retryScript(url("https://app.test/base")),
              "document.querySelector('button').onclick = () => { location.href = \"https://app.test/base\"; };");
}

}  // namespace
}  // namespace parvela
