#include "FaultServer.h"
#include "Variable.h"

#include <ParvelaKit/GLibPtr.h>
#include <Platform/MainLoop.h>
#include <Platform/SoupTransport.h>

#include <chrono>
#include <functional>
#include <stop_token>

#include <gio/gio.h>

namespace parvela {

void PrintTo(TransportError error, std::ostream* out) {
    *out << "TransportError " << static_cast<int>(error);
}

namespace {

using namespace std::chrono_literals;
using parvela::testing::FaultServer;
using parvela::testing::Variable;
using ::testing::HasSubstr;
using ::testing::Not;
using Peer = FaultServer::Peer;
using Answer = Result<HttpResponse, TransportError>;
using Clock = std::chrono::steady_clock;

constexpr std::size_t smallBody = 1024 * 1024;

HttpRequest get(const std::string& url) {
    return {.method = "GET", .url = *Url::parse(url)};
}

Answer send(const SoupTransport& transport, HttpRequest request) {
    return runUntilDone(transport(std::move(request), std::stop_token()));
}

FaultServer::Answer text(std::string bytes) {
    return [bytes = std::move(bytes)](Peer& peer) { peer.send(bytes); };
}

std::string withLength(std::string_view head, const std::string& body) {
    return "HTTP/1.1 " + std::string(head) + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string gzipped(const std::string& plain) {
    const auto compressor = Ref<GZlibCompressor>::adopt(g_zlib_compressor_new(G_ZLIB_COMPRESSOR_FORMAT_GZIP, 9));
    const auto sink = Ref<GOutputStream>::adopt(g_memory_output_stream_new_resizable());
    const auto stream =
        Ref<GOutputStream>::adopt(g_converter_output_stream_new(sink.get(), compressor.as<GConverter>()));
    g_output_stream_write_all(stream.get(), plain.data(), plain.size(), nullptr, nullptr, nullptr);
    g_output_stream_close(stream.get(), nullptr, nullptr);
    auto* const memory = sink.as<GMemoryOutputStream>();
    return {static_cast<char*>(g_memory_output_stream_get_data(memory)), g_memory_output_stream_get_data_size(memory)};
}

const std::string chunkedHead = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n";

std::string chunk(const std::string& data) {
    return CharPtr(g_strdup_printf("%zx\r\n", data.size())).get() + data + "\r\n";
}

TEST(SoupTransport, deliversWholeAnswers) {
    const std::string zipped = gzipped("{\"a\": 1}");
    const struct {
        const char* what;
        std::string bytes;
        int status;
        std::string body;
    } cases[] = {
        {"known length", withLength("200 OK\r\n", "hello"), 200, "hello"},
        {"no content", "HTTP/1.1 204 No Content\r\n\r\n", 204, ""},
        {"until the connection ends", "HTTP/1.0 200 OK\r\n\r\nhello", 200, "hello"},
        {"chunks, then the connection ends",
         chunkedHead + "Connection: close\r\n\r\n" + chunk("hel") + chunk("lo") + "0\r\n\r\n", 200, "hello"},
        {"chunks with a trailer", chunkedHead + "\r\n" + chunk("hello") + "0\r\nX-Sum: 1\r\n\r\n", 200, "hello"},
        {"no chunk but the last", chunkedHead + "\r\n0\r\n\r\n", 200, ""},
        {"gzip of known length", withLength("200 OK\r\nContent-Encoding: gzip\r\n", zipped), 200, "{\"a\": 1}"},
        {"gzip in chunks", chunkedHead + "Content-Encoding: gzip\r\n\r\n" + chunk(zipped) + "0\r\n\r\n", 200,
         "{\"a\": 1}"},
        {"a redirect is not followed", withLength("302 Found\r\nLocation: /elsewhere\r\n", ""), 302, ""},
        {"nobody is asked for a password",
         withLength("401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\n", "no"), 401, "no"},
        {"an informational answer comes first", "HTTP/1.1 103 Early Hints\r\n\r\n" + withLength("200 OK\r\n", "x"), 200,
         "x"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FaultServer server;
        server.on("/", text(c.bytes));
        const Answer answer = send(SoupTransport(), get(server.url("/")));
        ASSERT_TRUE(answer.has_value()) << ::testing::PrintToString(answer.error());
        EXPECT_EQ(answer->status, c.status);
        EXPECT_EQ(answer->body, c.body);
        EXPECT_EQ(server.requests().size(), 1U);
    }
}

TEST(SoupTransport, brokenAnswersNeverCountAsAnswers) {
    const std::string zipped = gzipped(std::string(5000, 'x') + "end");
    const std::string head = chunkedHead + "\r\n";
    const struct {
        const char* what;
        std::string bytes;
        TransportError error;
        const char* method = "GET";
    } cases[] = {
        {"closed without a word", "", TransportError::unreachable},
        {"not HTTP", "SSH-2.0-OpenSSH_9.2\r\n\r\n", TransportError::invalidResponse},
        {"garbage without a line end", std::string(3000, '\xFF'), TransportError::invalidResponse},
        {"shorter than its length", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhello", TransportError::unreachable},
        {"shorter than its length, of a change", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhello",
         TransportError::invalidResponse, "POST"},
        {"cut before the first chunk", head, TransportError::invalidResponse},
        {"cut inside a chunk size", head + chunk("{}") + "1", TransportError::invalidResponse},
        {"cut inside a chunk", head + "10\r\nhello", TransportError::invalidResponse},
        {"cut after a chunk's data", head + "5\r\nhello", TransportError::invalidResponse},
        {"cut between chunks", head + chunk("hello"), TransportError::invalidResponse},
        {"cut inside the last chunk", head + chunk("hello") + "0\r\n", TransportError::invalidResponse},
        {"cut between chunks on a closing connection", chunkedHead + "Connection: close\r\n\r\n" + chunk("hello"),
         TransportError::invalidResponse},
        {"gzip cut short", chunkedHead + "Content-Encoding: gzip\r\n\r\n" + chunk(zipped.substr(0, zipped.size() - 9)),
         TransportError::invalidResponse},
        {"announced as too large", "HTTP/1.1 200 OK\r\nContent-Length: 999999999999\r\n\r\n",
         TransportError::invalidResponse},
        {"a gzip bomb", withLength("200 OK\r\nContent-Encoding: gzip\r\n", gzipped(std::string(20 * smallBody, 'x'))),
         TransportError::invalidResponse},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FaultServer server;
        server.on("/", text(c.bytes));
        HttpRequest request = get(server.url("/"));
        request.method = c.method;
        const Answer answer = send(SoupTransport({.body = smallBody}), request);
        ASSERT_FALSE(answer.has_value()) << answer->status << " " << answer->body.substr(0, 99);
        EXPECT_EQ(answer.error(), c.error);
    }
}

TEST(SoupTransport, neverEndingAnswersEndWithinTheLimits) {
    struct Case {
        const char* what;
        FaultServer::Answer answer;
        TransportError error;
    };
    const auto flood = [](std::string first, std::string again) {
        return [first = std::move(first), again = std::move(again)](Peer& peer) {
            for (bool alive = peer.send(first); alive;) alive = peer.send(again);
        };
    };
    const auto drip = [](Peer& peer) {
        peer.send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
        while (peer.send("x") && !peer.waitForClose(20ms)) {
        }
    };
    const std::string block(65536, 'x');
    const Case cases[] = {
        {"no answer", [](Peer& peer) { peer.waitForClose(); }, TransportError::timedOut},
        {"a stall in the body",
         [](Peer& peer) {
             peer.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhello");
             peer.waitForClose();
         },
         TransportError::timedOut},
        {"a drip that is never silent", drip, TransportError::timedOut},
        {"a body without end", flood("HTTP/1.1 200 OK\r\n\r\n", block), TransportError::invalidResponse},
        {"chunks without end", flood(chunkedHead + "\r\n", chunk(block)), TransportError::invalidResponse},
        {"a header without end", flood("HTTP/1.1 200 OK\r\nX: ", block), TransportError::invalidResponse},
        {"header lines without end", flood("HTTP/1.1 200 OK\r\n", "X: y\r\n"), TransportError::invalidResponse},
        {"a status line without end", flood("HTTP/1.1 200 ", block), TransportError::invalidResponse},
        {"informational answers without end", flood("", "HTTP/1.1 103 Early Hints\r\nX: y\r\n\r\n"),
         TransportError::invalidResponse},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FaultServer server;
        server.on("/", c.answer);
        const SoupTransport transport({.idle = 300ms, .whole = 1200ms, .body = smallBody});
        const auto start = Clock::now();
        const Answer answer = send(transport, get(server.url("/")));
        EXPECT_LT(Clock::now() - start, 5s);
        ASSERT_FALSE(answer.has_value());
        EXPECT_EQ(answer.error(), c.error);
    }
}

TEST(SoupTransport, aRequestsOwnShorterTimeOutCounts) {
    FaultServer server;
    server.on("/", [](Peer& peer) { peer.waitForClose(); });
    HttpRequest request = get(server.url("/"));
    request.timeout = 1s;
    const Answer answer = send(SoupTransport(), std::move(request));
    ASSERT_FALSE(answer.has_value());
    EXPECT_EQ(answer.error(), TransportError::timedOut);
}

TEST(SoupTransport, unreachableServersFailAtOnce) {
    std::string refused;
    {
        const FaultServer gone;
        refused = gone.url("/");
    }
    FaultServer plain;
    const std::string urls[] = {refused, "http://no-such-host.invalid/",
                                "https://127.0.0.1:" + std::to_string(plain.port()) + "/"};
    for (const std::string& url : urls) {
        SCOPED_TRACE(url);
        const Answer answer = send(SoupTransport(), get(url));
        ASSERT_FALSE(answer.has_value());
        EXPECT_EQ(answer.error(), TransportError::unreachable);
    }
}

TEST(SoupTransport, noProxySeesWhatStaysOnThisMachine) {
    FaultServer proxy;
    proxy.on("http://no-such-host.invalid/", text(withLength("502 Bad Gateway\r\n", "{}")));
    FaultServer service;
    service.on("/", text(withLength("200 OK\r\n", "{}")));
    const Variable http("http_proxy", proxy.url("").c_str());
    const Variable exceptions("no_proxy", nullptr);
    const SoupTransport transport;
    const Answer direct = send(transport, get(service.url("/")));
    ASSERT_TRUE(direct.has_value());
    EXPECT_EQ(direct->status, 200);
    const Answer elsewhere = send(transport, get("http://no-such-host.invalid/"));
    ASSERT_TRUE(elsewhere.has_value()) << "the proxy of the desktop is used";
    EXPECT_EQ(elsewhere->status, 502);
}

TEST(SoupTransport, whatHttpCannotCarryIsRefusedUnsent) {
    FaultServer server;
    server.keepAlive("/", withLength("200 OK\r\n", ""));
    HttpRequest injectedHeader = get(server.url("/"));
    injectedHeader.headers = {{"Authorization", "Bearer tk_a\r\nX-Evil: 1"}};
    HttpRequest injectedName = get(server.url("/"));
    injectedName.headers = {{"X: y\r\nZ", "1"}};
    HttpRequest injectedMethod = get(server.url("/"));
    injectedMethod.method = "GET / HTTP/1.1\r\nX: y\r\n\r\nGET";
    const std::string local = "127.0.0.1:" + std::to_string(server.port());
    const HttpRequest requests[] = {
        injectedHeader,          injectedName,       injectedMethod,  get("ftp://" + local + "/"),
        get("spike://" + local), get("file:///etc"), get("http:///"), get("relative")};
    for (const HttpRequest& request : requests) {
        SCOPED_TRACE(request.url.text());
        const Answer answer = send(SoupTransport(), request);
        ASSERT_FALSE(answer.has_value());
        EXPECT_EQ(answer.error(), TransportError::badURL);
    }
    EXPECT_EQ(server.connections(), 0);
}

TEST(SoupTransport, sendsTheRequestAsGivenWithoutCookies) {
    FaultServer server;
    server.keepAlive("/api/v1/tasks?x=a%20b",
                     withLength("200 OK\r\nSet-Cookie: id=1\r\nCache-Control: max-age=3600\r\n", "{}"));
    HttpRequest request = get(server.url("/api/v1/tasks?x=a%20b#fragment"));
    request.method = "PATCH";
    request.headers = {
        {"Authorization", "Bearer tk_abc"}, {"User-Agent", "Parvela-macOS/1.0"}, {"Content-Type", "application/json"}};
    request.body = "{\"title\":\"\u00FC\"}";
    const SoupTransport transport;
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(send(transport, request).has_value());

    ASSERT_EQ(server.requests().size(), 3U);
    for (const std::string& sent : server.requests()) {
        EXPECT_TRUE(sent.starts_with("PATCH /api/v1/tasks?x=a%20b HTTP/1.1\r\n")) << sent;
        EXPECT_THAT(sent, HasSubstr("Authorization: Bearer tk_abc\r\n"));
        EXPECT_THAT(sent, HasSubstr("User-Agent: Parvela-macOS/1.0\r\n"));
        EXPECT_THAT(sent, HasSubstr("Content-Type: application/json\r\n"));
        EXPECT_TRUE(sent.ends_with("\r\n\r\n{\"title\":\"\u00FC\"}")) << sent;
        EXPECT_THAT(sent, Not(HasSubstr("Cookie")));
    }
}

TEST(SoupTransport, asksAgainOverTheSameConnectionInsteadOfCaching) {
    FaultServer server;
    server.keepAlive("/", withLength("200 OK\r\nCache-Control: max-age=3600\r\nETag: \"1\"\r\n", "{}"));
    const SoupTransport transport;
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(send(transport, get(server.url("/"))).has_value());
    EXPECT_EQ(server.requests().size(), 3U);
    EXPECT_EQ(server.connections(), 1);
}

TEST(SoupTransport, takesLargeAnswersAndUnreadableHeaders) {
    FaultServer server;
    const std::string body(30 * 1024 * 1024, 'x');
    server.on("/", [&](Peer& peer) { peer.send(withLength("200 OK\r\nX-Name: caf\xE9\r\nretry-after: 5\r\n", body)); });
    const Answer answer = send(SoupTransport(), get(server.url("/")));
    ASSERT_TRUE(answer.has_value());
    EXPECT_TRUE(answer->body == body);
    EXPECT_EQ(answer->header("x-name"), "caf\u{FFFD}");
    EXPECT_EQ(answer->header("Retry-After"), "5");
}

TEST(SoupTransport, aStopRequestClosesTheConnection) {
    std::atomic<bool> closed = false;
    std::stop_source stop;
    FaultServer server;
    server.on("/early", [&](Peer& peer) {
        stop.request_stop();
        closed = peer.waitForClose(10s);
    });
    server.on("/late", [&](Peer& peer) {
        peer.send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhello");
        stop.request_stop();
        closed = peer.waitForClose(10s);
    });
    const SoupTransport transport;
    for (const char* path : {"/early", "/late"}) {
        SCOPED_TRACE(path);
        closed = false;
        stop = {};
        const Answer answer = runUntilDone(transport(get(server.url(path)), stop.get_token()));
        ASSERT_FALSE(answer.has_value());
        EXPECT_EQ(answer.error(), TransportError::cancelled);
        const auto deadline = Clock::now() + 5s;
        while (!closed && Clock::now() < deadline) runUntilDone(sleepFor(1ms));
        EXPECT_TRUE(closed);
    }

    const int before = server.connections();
    const Answer answer = runUntilDone(transport(get(server.url("/early")), stop.get_token()));
    EXPECT_EQ(answer.error(), TransportError::cancelled);
    EXPECT_EQ(server.connections(), before) << "a request that is stopped beforehand is not sent";
}

Task<int> countAnswers(SoupTransport transport, HttpRequest request, int count) {
    int whole = 0;
    std::vector<Task<Answer>> tasks;
    for (int i = 0; i < count; ++i) tasks.push_back(transport(request, std::stop_token()));
    for (auto& task : tasks) {
        const Answer answer = co_await task;
        if (answer && answer->body == "hello") ++whole;
    }
    co_return whole;
}

TEST(SoupTransport, manyRequestsAtOnceGetTheirAnswers) {
    FaultServer server;
    server.keepAlive("/", chunkedHead + "\r\n" + chunk("hello") + "0\r\n\r\n");
    EXPECT_EQ(runUntilDone(countAnswers(SoupTransport(), get(server.url("/")), 50)), 50);
}

}  // namespace
}  // namespace parvela
