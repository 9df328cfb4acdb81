#include "ServiceFixture.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>

#include <fmt/format.h>

namespace parvela::service {
namespace {

using test::RawConnection;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class HttpTest : public test::ServiceTest {
protected:
    HttpTest() : robin(join("Robin Hale")), board(makeBoard(robin, "Launch")), task(makeTask(robin, board, "T")) {}

    std::string hostOf(const std::string& origin) const { return origin.substr(std::string_view("http://").size()); }

    /// The status line's number of a hand-written request.
    static int rawStatus(const std::string& origin, const std::string& bytes, const char* until = "\r\n") {
        const std::string answer = RawConnection(origin).exchange(bytes, until);
        return answer.starts_with("HTTP/1.") && answer.size() > 12 ? std::stoi(answer.substr(9, 3)) : 0;
    }

    test::Browser robin;
    std::string board, task;
};

TEST_F(HttpTest, onlyLoopbackHostNamesAreServed) {
    const auto port = hostOf(service->webOrigin()).substr(hostOf(service->webOrigin()).find(':'));
    const struct {
        std::string host;
        int status;
    } cases[] = {{"localhost" + port, 200},
                 {"LOCALHOST" + port, 200},
                 {"127.0.0.1" + port, 200},
                 {"[::1]" + port, 200},
                 {"localhost", 403},
                 {"localhost:1", 403},
                 {"parvela.evil.example", 403},
                 {"evil.example" + port, 403},
                 {"localhost.evil.example" + port, 403},
                 {"127.0.0.1.nip.example", 403},
                 {"evil.example#localhost" + port, 403}};
    for (const auto& [host, status] : cases) {
        const auto request = fmt::format("GET /nothing.txt HTTP/1.1\r\nHost: {}\r\n\r\n", host);
        EXPECT_EQ(rawStatus(service->webOrigin(), request), status == 200 ? 404 : status) << host;
        EXPECT_EQ(rawStatus(service->apiOrigin(), request), 403) << host << " with the other site's port";
    }
    EXPECT_EQ(rawStatus(service->webOrigin(), "GET / HTTP/1.1\r\n\r\n") / 100, 4);  // no host at all
}

TEST_F(HttpTest, changesNeedTheWebAppsMarkAndItsOrigin) {
    const std::string origin = service->webOrigin();
    const auto post = [&](const test::Headers& headers, const std::string& at) {
        HttpRequest request{.method = "POST",
                            .url = Url::parse(at + "/api/v1/tasks").value(),
                            .headers = headers,
                            .body = nlohmann::json{{"board", board}, {"title", "Forged"}}.dump()};
        request.headers.push_back({"Cookie", robin.cookie});
        return runUntilDone(SoupTransport()(std::move(request), {}))->status;
    };
    const HttpHeader mark{"X-Parvela-Web", "1"};
    EXPECT_EQ(post({}, origin), 403);
    EXPECT_EQ(post({{"X-Parvela-Web", "2"}}, origin), 403);
    EXPECT_EQ(post({mark, {"Origin", "http://evil.example"}}, origin), 403);
    EXPECT_EQ(post({mark, {"Origin", "null"}}, origin), 403);
    EXPECT_EQ(post({mark, {"Origin", service->apiOrigin()}}, origin), 403);  // another port is another site
    EXPECT_EQ(post({mark, {"Origin", origin}}, origin), 200);
    EXPECT_EQ(post({mark}, service->apiOrigin()), 401);  // the API site knows no cookies
    EXPECT_EQ(robin.fetch("/api/v1/tasks").at("tasks").size(), 2U);
}

TEST_F(HttpTest, answersCarryTheirGuards) {
    const auto answer = robin.get("/api/v1/me");
    EXPECT_EQ(answer.header("Cache-Control"), "no-store");
    EXPECT_EQ(answer.header("X-Content-Type-Options"), "nosniff");
    EXPECT_EQ(answer.header("Cross-Origin-Resource-Policy"), "same-origin");
    EXPECT_EQ(answer.header("Access-Control-Allow-Origin"), std::nullopt);
    const auto preflight = robin.send("OPTIONS", "/api/v1/me");
    EXPECT_EQ(preflight.status, 405);
}

TEST_F(HttpTest, bodiesBeyondTheLimitAreRefusedHoweverTheyCome) {
    const std::string host = hostOf(service->webOrigin());
    const std::string head = fmt::format(
        "POST /api/v1/tasks HTTP/1.1\r\nHost: {}\r\nX-Parvela-Web: 1\r\nCookie: {}\r\n", host, robin.cookie);
    EXPECT_EQ(rawStatus(service->webOrigin(), head + "Content-Length: 99999999999\r\nExpect: 100-continue\r\n\r\n"),
              413);
    std::string chunks = "Transfer-Encoding: chunked\r\n\r\n";
    for (int i = 0; i < 40; ++i) chunks += "10000\r\n" + std::string(0x10000, ' ') + "\r\n";
    EXPECT_EQ(rawStatus(service->webOrigin(), head + chunks + "0\r\n\r\n"), 413);
    // Files may be larger, and have their own end.
    const std::string upload = "/api/tasks/" + task + "/files?name=big.bin";
    EXPECT_EQ(robin.send("POST", upload, std::string(2U << 20, 'x')).status, 200);
    EXPECT_EQ(robin.send("POST", upload, std::string((25U << 20) + 1, 'x')).status, 413);
    EXPECT_EQ(robin.get("/api/v1/me").status, 200);
}

TEST_F(HttpTest, nonsenseOnTheWireDoesNoHarm) {
    const std::string host = hostOf(service->webOrigin());
    const std::string requests[] = {
        "\r\n\r\n",
        "GET\r\n\r\n",
        std::string(70'000, 'A') + "\r\n\r\n",
        "GET / HTTP/1.1\r\nHost: " + host + "\r\nContent-Length: -5\r\n\r\n",
        "BREW /api/v1/me HTTP/1.1\r\nHost: " + host + "\r\n\r\n",
        "GET /%ff%fe%00 HTTP/1.1\r\nHost: " + host + "\r\n\r\n",
        "GET /api/v1/tasks?q=%zz&limit=%00 HTTP/1.1\r\nHost: " + host + "\r\n\r\n",
        "GET /api/v1/tasks/%2e%2e%2f%2e%2e HTTP/1.1\r\nHost: " + host + "\r\nCookie: " + robin.cookie + "\r\n\r\n",
        "GET http://evil.example/ HTTP/1.1\r\nHost: evil.example\r\n\r\n",
        "OPTIONS * HTTP/1.1\r\nHost: " + host + "\r\n\r\n"};
    for (const std::string& request : requests) {
        const int status = rawStatus(service->webOrigin(), request, "");
        EXPECT_TRUE(status == 0 || status / 100 == 4) << status << " for " << request.substr(0, 60);
    }
    EXPECT_EQ(robin.get("/api/v1/me").status, 200);
}

TEST_F(HttpTest, clientsThatGoAwayLeaveNothingOpen) {
    const auto openFiles = [] {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(begin(files), end(files));
    };
    const std::string host = hostOf(service->webOrigin());
    const auto before = openFiles();
    for (int i = 0; i < 20; ++i) {
        for (const char* line : {"GET /api/session", "OPTIONS *", "GET /nothing.txt"}) {
            rawStatus(service->webOrigin(), fmt::format("{} HTTP/1.1\r\nHost: {}\r\n\r\n", line, host));
        }
        RawConnection(service->webOrigin())
            .exchange("POST /api/session HTTP/1.1\r\nHost: x\r\nContent-Length: 9\r\n\r\nabc", "");
    }
    robin.get("/api/v1/me");  // gives the service its turn to close
    EXPECT_LT(openFiles(), before + 10);
}

TEST_F(HttpTest, aPortInUseIsExplained) {
    Service::Options options{.database = ":memory:", .apiPort = 0, .passwordCost = PasswordCost::minimal};
    options.webPort = static_cast<std::uint16_t>(*Url::parse(service->webOrigin())->port());
    Service second(options, clock, random);
    const auto started = second.start();
    ASSERT_FALSE(started.has_value());
    EXPECT_THAT(started.error(), HasSubstr(fmt::format("Port {} is already in use", options.webPort)));
}

class WebAssetsTest : public HttpTest {
protected:
    WebAssetsTest() {
        const auto folder = root / "web";
        std::filesystem::create_directories(folder / "js");
        write(folder / "index.html", "<p>page");
        write(folder / "js" / "main.js", "run()");
        write(folder / ".hidden.js", "secret");
        write(root / "outside.txt", "secret");
        std::filesystem::create_symlink(root / "outside.txt", folder / "link.txt");
        start({.assets = folder});
        robin = join("Robin Hale");
    }

    static void write(const std::filesystem::path& file, const char* text) { std::ofstream(file) << text; }

    parvela::test::TemporaryFolder temporary;
    const std::filesystem::path root = temporary.path();
};

TEST_F(WebAssetsTest, pagesGetTheAppAndFilesGetThemselves) {
    for (const char* page :
         {"/", "/home", "/b/brd_1?view=list", "/t/TSK-1", "/settings/developers", "/oauth/start?u=x"}) {
        const auto answer = robin.get(page);
        EXPECT_EQ(answer.body, "<p>page") << page;
        EXPECT_EQ(answer.header("Cache-Control"), "no-store");
        EXPECT_THAT(answer.header("Content-Security-Policy").value_or(""), StartsWith("default-src 'self'"));
    }
    const auto script = robin.get("/js/main.js");
    EXPECT_EQ(script.body, "run()");
    EXPECT_EQ(script.header("Content-Type"), "text/javascript; charset=utf-8");
    const auto again = robin.send("GET", "/js/main.js", {}, {{"If-None-Match", script.header("ETag").value_or("")}});
    EXPECT_EQ(again.status, 304);
    write(root / "web" / "js" / "main.js", "changed()");
    EXPECT_EQ(robin.send("GET", "/js/main.js", {}, {{"If-None-Match", script.header("ETag").value_or("")}}).body,
              "changed()");
    for (const char* missing : {"/js/none.js", "/api/none", "/api/v1/none", "/files/fil_1", "/api"}) {
        EXPECT_EQ(robin.get(missing).status, 404) << missing;
    }
}

TEST_F(WebAssetsTest, noPathLeadsOutOfTheFolder) {
    const std::string host = hostOf(service->webOrigin());
    for (const char* path : {"/../outside.txt", "/js/../../outside.txt", "/%2e%2e/outside.txt", "/..%2foutside.txt",
                             "/js/..%2f..%2foutside.txt", "/..\\outside.txt", "/link.txt", "/.hidden.js",
                             "//etc/passwd.", "/js//main.js", "/%00.txt", "/js/main.js%00.txt"}) {
        const std::string answer =
            RawConnection(service->webOrigin())
                .exchange(fmt::format("GET {} HTTP/1.1\r\nHost: {}\r\nConnection: close\r\n\r\n", path, host), "");
        EXPECT_THAT(answer, Not(HasSubstr("secret"))) << path;
        EXPECT_THAT(answer, Not(HasSubstr(" 200 "))) << path;
    }
}

}  // namespace
}  // namespace parvela::service
