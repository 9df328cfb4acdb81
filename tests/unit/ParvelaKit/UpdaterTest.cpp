#include "support/FakeClock.h"
#include "support/FakeTransport.h"
#include "support/MemoryStore.h"

#include <ParvelaKit/Updater.h>

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

#include <sodium.h>

namespace parvela {
namespace {

using appcast::Offer;
using test::FakeTransport;

TEST(AppVersion, comparesNumberByNumber) {
    const std::array ascending = {"0", "0.9", "1", "1.0.1", "1.2", "1.9.9", "1.10", "1.10.1", "2.0.0.1", "999999999.1"};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(AppVersion::parse(ascending[i]).value() <=> AppVersion::parse(ascending[j]).value(), i <=> j)
                << ascending[i] << " and " << ascending[j];
        }
    }
    EXPECT_EQ(AppVersion::parse("1.2"), AppVersion::parse("1.2.0.0"));
    EXPECT_EQ(AppVersion::parse("01.002"), AppVersion::parse("1.2"));
}

TEST(AppVersion, isNumbersAndDotsOnly) {
    for (const char* text : {"", ".", "1.", ".1", "1..2", "v1", "1.2-beta", "1.2 ", "+1", "-1", "1.2.3.4.5.6.7.8.9",
                             "4294967296", "1,2", "١.٢"}) {
        EXPECT_FALSE(AppVersion::parse(text)) << text;
    }
}

/// A key pair made from a number.
class Signer {
public:
    explicit Signer(unsigned char number) {
        std::array<unsigned char, crypto_sign_SEEDBYTES> seed{};
        seed.fill(number);
        crypto_sign_seed_keypair(publicKey_.data(), secretKey_.data(), seed.data());
    }

    std::string publicKey() const { return base64(publicKey_); }
    FeedKey key() const { return FeedKey::fromBase64(publicKey()).value(); }

    std::string signedFeed(const std::string& document) const {
        std::array<unsigned char, crypto_sign_BYTES> signature{};
        crypto_sign_detached(signature.data(), nullptr, reinterpret_cast<const unsigned char*>(document.data()),
                             document.size(), secretKey_.data());
        return document + "<!-- parvela-signature: " + base64(signature) + " -->\n";
    }

private:
    template <std::size_t Size>
    static std::string base64(const std::array<unsigned char, Size>& bytes) {
        std::string text(sodium_base64_ENCODED_LEN(Size, sodium_base64_VARIANT_ORIGINAL), '\0');
        sodium_bin2base64(text.data(), text.size(), bytes.data(), Size, sodium_base64_VARIANT_ORIGINAL);
        text.pop_back();  // the final NUL
        return text;
    }

    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicKey_{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secretKey_{};
};

std::string documentOf(const std::string& items) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<rss version=\"2.0\" xmlns:p=\"urn:parvela:appcast\"><channel>"
           "<title>Parvela</title><link>https://parvela.example</link>" +
           items + "</channel></rss>\n";
}

std::string item(const std::string& version, const std::string& notes = "Notes",
                 const std::string& link = "https://parvela.example/get") {
    return "<item><p:version>" + version + "</p:version><link>" + link + "</link><description>" + notes +
           "</description></item>";
}

Offer offer(const char* version, std::string notes = "Notes", const char* link = "https://parvela.example/get") {
    return {AppVersion::parse(version).value(), std::move(notes), Url::parse(link).value()};
}

TEST(Appcast, isReadOnlyAsItWasSigned) {
    const Signer signer(1), other(2);
    const std::string document = documentOf(item("2.0"));
    const std::string feed = signer.signedFeed(document);
    const auto mark = feed.find("<!-- parvela-signature");
    EXPECT_EQ(appcast::verified(feed, signer.key()), document);
    EXPECT_EQ(appcast::verified(feed.substr(0, feed.size() - 1), signer.key()), document);  // no line break at the end

    std::string altered = feed;
    altered.replace(altered.find("2.0</"), 3, "3.0");
    std::string broken = feed;
    broken[mark + 30] = broken[mark + 30] == 'A' ? 'B' : 'A';
    const struct {
        const char* what;
        std::string feed;
    } refused[] = {
        {"another key", other.signedFeed(document)},
        {"no signature", document},
        {"an empty signature", document + "<!-- parvela-signature:  -->\n"},
        {"half a signature line", document + "<!-- parvela-signature: -->\n"},
        {"no base64", document + "<!-- parvela-signature: " + std::string(88, '!') + " -->\n"},
        {"another signature", broken},
        {"another text", altered},
        {"text before it", " " + feed},
        {"text behind it", feed + documentOf(item("9.0"))},
        {"the signature of another text", documentOf(item("9.0")) + feed.substr(mark)},
        {"a second line break", feed + "\n"},
        {"one line only", feed.substr(mark)},
        {"nothing", ""},
    };
    for (const auto& [what, text] : refused) {
        EXPECT_EQ(appcast::verified(text, signer.key()), Failure(appcast::Error::notSigned)) << what;
    }
    const std::string huge = signer.signedFeed(std::string(appcast::maximumSize, ' ') + "\n");
    EXPECT_EQ(appcast::verified(huge, signer.key()), Failure(appcast::Error::tooLarge));
}

TEST(Appcast, listsTheItemsThatAreComplete) {
    const struct {
        const char* what;
        std::string items;
        std::vector<Offer> expected;
    } cases[] = {
        {"none", "", {}},
        {"several, in order", item("1.0") + item("1.2"), {offer("1.0"), offer("1.2")}},
        {"blanks around values",
         item(" 1.1\n", "\n New:\n\t* this \n", "\n https://a.example/ "),
         {offer("1.1", "New:\n\t* this", "https://a.example/")}},
        {"notes as text", item("1.1", "<![CDATA[<b>R&D</b>]]> &lt;i&gt; &#233;"), {offer("1.1", "<b>R&D</b> <i> é")}},
        {"notes without tricks", item("1.1", "a\u202Eb\u0085c&#x1b;[2J"), {offer("1.1", "abc[2J")}},
        {"no notes",
         "<item><version>1.1</version><link>https://a.example/</link></item>",
         {offer("1.1", "", "https://a.example/")}},
        {"elements within values", item("1.1", "one <b>two</b> three"), {offer("1.1", "one two three")}},
        {"no version", "<item><link>https://a.example/</link></item>", {}},
        {"no page", "<item><p:version>1.1</p:version></item>", {}},
        {"two versions",
         "<item><p:version>1.1</p:version><q:version>9</q:version><link>https://a.example/</link></item>",
         {}},
        {"a version that is none", item("1.1-beta") + item("1.1"), {offer("1.1")}},
        {"a plain page", item("1.1", "", "http://a.example/"), {}},
        {"a script", item("1.1", "", "javascript:alert(1)"), {}},
        {"a file", item("1.1", "", "file:///etc/passwd"), {}},
        {"no host", item("1.1", "", "https:///get"), {}},
        {"an item in an item", "<item>" + item("9.9") + "</item>", {}},
    };
    for (const auto& [what, items, expected] : cases) {
        EXPECT_EQ(appcast::parse(documentOf(items)), expected) << what;
    }
}

TEST(Appcast, refusesWhatIsNoFeed) {
    std::string opening, closing;
    for (int i = 0; i < 100; ++i) opening += "<a>", closing += "</a>";
    const std::string cases[] = {
        "",
        "plain text",
        "{\"version\": \"9.0\"}",
        "<html><body/></html>",
        "<rss version=\"2.0\"></rss>",
        "<rss><channel><item>",
        documentOf("<item><p:version>1</item>"),
        documentOf("\xFF"),
        documentOf("&unknown;"),
        documentOf(opening + closing),
        "<!DOCTYPE rss [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>" + documentOf(item("9.0", "&b;")),
        "<!DOCTYPE rss SYSTEM \"file:///etc/passwd\">" + documentOf(item("9.0")),
    };
    for (const std::string& document : cases) {
        EXPECT_EQ(appcast::parse(document), Failure(appcast::Error::malformed)) << document;
    }
}

class AppcastUpdaterTest : public testing::Test {
protected:
    AppcastUpdater updater(const char* current = "1.4") {
        return {UpdateFeed::from("https://parvela.example/appcast.xml", signer.publicKey()).value(),
                AppVersion::parse(current).value(), network.transport(), Preferences(store), clock};
    }
    UpdateResult check(AppcastUpdater& updater) {
        auto task = updater.check();
        EXPECT_TRUE(task.done());
        return std::move(task).result();
    }

    Signer signer{1};
    FakeTransport network;
    std::shared_ptr<test::MemoryStore> store = std::make_shared<test::MemoryStore>();
    std::shared_ptr<test::FakeClock> clock = std::make_shared<test::FakeClock>();
    const std::string route = "GET /appcast.xml";
};

TEST_F(AppcastUpdaterTest, offersTheNewestOnlyWhenItIsNewer) {
    const std::string feed = signer.signedFeed(documentOf(item("1.4") + item("1.10", "Best") + item("1.9")));
    const struct {
        const char* current;
        UpdateResult expected;
    } cases[] = {
        {"1.4", offer("1.10", "Best")}, {"1.9.9", offer("1.10", "Best")}, {"1.10", UpToDate{}},
        {"1.10.0", UpToDate{}},         {"1.10.1", UpToDate{}},           {"2", UpToDate{}},
    };
    for (const auto& [current, expected] : cases) {
        network.answer(route, 200, feed);
        auto checking = updater(current);
        EXPECT_EQ(check(checking), expected) << current;
    }
    network.answer(route, 200, signer.signedFeed(documentOf("")));
    auto empty = updater();
    EXPECT_EQ(check(empty), UpdateResult(UpToDate{}));
}

TEST_F(AppcastUpdaterTest, tellsWhyNothingIsOffered) {
    auto checking = updater();
    const std::string good = signer.signedFeed(documentOf(item("9.0")));
    const struct {
        int status;
        std::string body;
        UpdateError expected;
    } answers[] = {
        {404, good, UpdateError::badAnswer},
        {301, good, UpdateError::badAnswer},
        {200, "<html>Sign in to the network</html>", UpdateError::notSigned},
        {200, Signer(2).signedFeed(documentOf(item("9.0"))), UpdateError::notSigned},
        {200, signer.signedFeed("<rss>\n"), UpdateError::badAnswer},
        {200, good + std::string(appcast::maximumSize, ' '), UpdateError::badAnswer},
    };
    for (const auto& [status, body, expected] : answers) {
        network.answer(route, status, body);
        EXPECT_EQ(check(checking), UpdateResult(expected)) << status << " " << body.substr(0, 40);
    }
    const std::pair<TransportError, UpdateError> failures[] = {
        {TransportError::unreachable, UpdateError::unreachable},
        {TransportError::timedOut, UpdateError::timedOut},
        {TransportError::invalidResponse, UpdateError::badAnswer},
    };
    for (const auto& [failure, expected] : failures) {
        network.fail(route, failure);
        EXPECT_EQ(check(checking), UpdateResult(expected));
    }
}

TEST_F(AppcastUpdaterTest, isDueOnceADay) {
    auto checking = updater();
    EXPECT_TRUE(checking.isDue());
    network.fail(route, TransportError::unreachable);
    check(checking);
    EXPECT_TRUE(checking.isDue()) << "offline is no answer";
    network.answer(route, 500);
    check(checking);
    EXPECT_FALSE(checking.isDue()) << "a failing server is not asked again and again";
    clock->advance(std::chrono::hours(24) - std::chrono::milliseconds(1));
    EXPECT_FALSE(updater().isDue()) << "remembered from one start to the next";
    clock->advance(std::chrono::milliseconds(1));
    EXPECT_TRUE(checking.isDue());
    clock->advance(-std::chrono::hours(100));
    EXPECT_TRUE(checking.isDue()) << "the clock was wrong then";
    store->set("lastUpdateCheck", std::numeric_limits<std::int64_t>::min());
    EXPECT_TRUE(checking.isDue());
}

TEST_F(AppcastUpdaterTest, remembersWhatTheUserDoesNotWant) {
    const auto unwanted = AppVersion::parse("2.0").value();
    EXPECT_FALSE(updater().isSkipped(unwanted));
    updater().skip(unwanted);
    EXPECT_TRUE(updater().isSkipped(unwanted));
    EXPECT_FALSE(updater().isSkipped(AppVersion::parse("2.0.1").value()));
}

TEST(UpdateFeed, needsASafeAddressAndAKey) {
    const std::string key = Signer(1).publicKey();
    const struct {
        const char* address;
        std::string key;
        bool isFeed;
    } cases[] = {
        {"https://parvela.example/feed", key, true},
        {"http://127.0.0.1:8080/feed", key, true},
        {"http://parvela.example/feed", key, false},
        {"ftp://parvela.example/feed", key, false},
        {"file:///feed", key, false},
        {"https:///feed", key, false},
        {"", "", false},
        {"https://parvela.example/feed", "", false},
        {"https://parvela.example/feed", key.substr(4), false},
        {"https://parvela.example/feed", key + key, false},
        {"https://parvela.example/feed", key + " ", false},
    };
    for (const auto& [address, text, isFeed] : cases) {
        EXPECT_EQ(UpdateFeed::from(address, text).has_value(), isFeed) << address << " " << text;
    }
}

}  // namespace
}  // namespace parvela
